#!/usr/bin/env python3
"""Keeps the runs that the documents show true.

    tools/docruns.py             runs every command of the documents again; a difference is shown, the status is then 1
    tools/docruns.py --write     puts what the commands print now into the documents

A run is a fenced block of the kind "console". Its lines that begin with "$ " are commands, run from the top of the source
tree in the order of the page; what follows a command is its output and error text. build/oz in a command stands for the
program that is given by --oz. Files that a page's commands make are gone when the page ends.
"""

import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = ["README.md", "docs/language.md", "docs/cpp.md", "docs/external.md", "docs/fortran.md", "docs/runtime.md",
         "docs/link.md", "docs/developing.md", "docs/schedules.md"]
BLOCK = re.compile(r"^```console\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def folder_for_page(top, oz):
    """What the commands of a page see: the tree's own files, the program as build/oz, and others from beside it."""
    for entry in ROOT.iterdir():
        if not entry.name.startswith("build"):
            (top / entry.name).symlink_to(entry)
    (top / "build").mkdir()
    (top / "build" / "oz").symlink_to(oz)
    for name in ["ozpar", "ozpeer", "oztm", "examples"]:
        (top / "build" / name).symlink_to(oz.parent / name)


def run_block(block, folder):
    commands = [line for line in block.splitlines() if line.startswith("$ ")]
    made = ""
    for command in commands:
        done = subprocess.run(["bash", "-c", command[2:]], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, env={**os.environ, "LC_ALL": "C"}, text=True, check=False)
        made += command + "\n" + done.stdout
        if made and not made.endswith("\n"):
            made += "\n"
    return made


def renew(page, oz):
    """The page with the output of its runs as it is now."""
    text = (ROOT / page).read_text(encoding="utf-8")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        folder_for_page(folder, oz)
        return text, BLOCK.sub(lambda block: "```console\n" + run_block(block[1], folder) + "```", text)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--oz", default=ROOT / "build" / "oz", type=pathlib.Path, help="the program")
    parser.add_argument("--write", action="store_true", help="rewrite the documents")
    options = parser.parse_args()
    if not options.oz.is_file():
        sys.exit("docruns: there is no program %s" % options.oz)
    status = 0
    for page in PAGES:
        old, new = renew(page, options.oz.resolve())
        if options.write:
            (ROOT / page).write_text(new, encoding="utf-8")
        elif old != new:
            status = 1
            print("\n".join(difflib.unified_diff(old.splitlines(), new.splitlines(), page, "what the commands print",
                                                 lineterm="")))
    sys.exit(status)


if __name__ == "__main__":
    main()
