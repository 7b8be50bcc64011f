#!/usr/bin/env python3
"""Compiles what the generators write, and runs it.

  cplusplus  every file set that a script under tests/cplusplus makes goes through the compilers, wrappers included, and
             no error and no warning may come up
  sets       every file set that a script under tests/fortran makes is compiled with warnings on, as it comes from the
             compiler; those of UNCOMPILABLE must be refused
  agree      the functions of a model, generated in Fortran and in C++, become two link programs; both are called with
             the same random arguments, their answers agree to 1e-13 relative, and are what a formula says
  callbacks  a Fortran function asks the host, another one calls an external function

A link program is made from a file set alone: its functions and their arguments stand in the link template (.tm), the
sizes of arrays in the declarations of the Fortran text.
"""

import argparse
import importlib.machinery
import importlib.util
import math
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(TESTS.parent / "tools" / "python"))
import ozlink  # noqa: E402

# File sets that no Fortran compiler takes, and why.
UNCOMPILABLE = {
    "ladder": "an instance set as a variable: its subroutine stands in front of \"contains\"",
    "complex": "complex variables have no declaration",
    "tasks": "a parallel ForAll: the records of its tasks are declared behind the function that uses them",
}

# Functions of the models that are not compared, and why.
NOT_COMPARED = {
    "Forms`turned": "complex",
    "Forms`branches": "a Which as a value",
    "Forms`sequence": "a sequence as a value",
    "Forms`asked": "a callback",
    **{"Numerics`" + name: "external" for name in ("errorFunction", "randomInteger", "bessel", "polar", "sorted")},
}

TOLERANCE = 1e-13
ROUNDS = 200


def load_runner():
    loader = importlib.machinery.SourceFileLoader("run", str(TESTS / "run"))
    runner = importlib.util.module_from_spec(importlib.util.spec_from_loader("run", loader))
    loader.exec_module(runner)
    return runner


runner = load_runner()


def command(folder, *words):
    """Runs a compiler; its messages if it fails."""
    done = subprocess.run([str(w) for w in words], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False)
    return done.stdout if done.returncode else ""


# ---- file sets


def complete_set(folder, base):
    """Gives the file of external functions the name that the module includes it by; the model's name."""
    model = re.search(r"^module zc_(\w+)", (folder / (base + ".f90")).read_text(), re.MULTILINE)[1]
    external = (folder / (base + "Ext.f90inc")).read_text()
    (folder / (model + "Ext.f90inc")).write_text(external)
    return model


def stand_ins(folder, base, model):
    """Sources of the foreign modules that the wrappers use, with the interfaces that the set declares."""
    wrappers = (folder / (base + "if.f90")).read_text()
    names = sorted(set(re.findall(r"^ *use (zc_\w+)", wrappers, re.MULTILINE)) - {"zc_" + model})
    for name in names:
        text = "module %s\ninterface\ninclude '%sExt.f90inc'\nend interface\nend module\n" % (name, model)
        (folder / (name + ".f90")).write_text(text)
    return [name + ".f90" for name in names]


def compile_set(folder, base, options):
    """Compiles a set; the messages of what fails."""
    model = complete_set(folder, base)
    report = ""
    for source in stand_ins(folder, base, model) + [base + ".f90", base + "if.f90"]:
        report += command(folder, options.fortran, "-cpp", "-Wall", "-O2", "-I", options.modules, "-c", source)
    return report


def run_script(script, folder, options):
    runner.copy_models(script.parent, folder)
    subprocess.run([options.commands], input=script.read_text(), text=True, cwd=folder, stdout=subprocess.DEVNULL,
                   check=True)


def check_cplusplus(options):
    failures = []
    include = [word for path in options.cxx_include for word in ("-I", path)]
    for script in sorted((TESTS / "cplusplus").glob("*.cmds")):
        with tempfile.TemporaryDirectory() as made:
            run_script(script, pathlib.Path(made), options)
            for source in sorted(pathlib.Path(made).glob("*.cc")):
                for compiler in filter(shutil.which, ("g++", "clang++")):
                    report = command(made, compiler, "-std=c++17", "-Wall", "-Werror", "-O1", *include, "-c", "-o",
                                     "/dev/null", source.name)
                    failures += [report] if report else []
                    print("%-15s %s" % (source.name, compiler))
    return failures


def check_sets(options):
    failures = []
    for script in sorted((TESTS / "fortran").glob("*.cmds")):
        with tempfile.TemporaryDirectory() as made:
            run_script(script, pathlib.Path(made), options)
            report = compile_set(pathlib.Path(made), script.stem, options)
        if bool(report) != (script.stem in UNCOMPILABLE):
            failures.append("%s: %s" % (script.stem, report or "compiles, but stands in the list of those that do not"))
        print("%-15s %s" % (script.stem, "refused: " + UNCOMPILABLE.get(script.stem, "") if report else "compiled"))
    return failures


# ---- link programs


def generate(folder, model, language, functions, variables, options):
    """A file set named like the model's file."""
    source = model.read_text()
    (folder / model.name).write_text(source)
    base = re.search(r"^model (\w+)", source, re.MULTILINE)[1]
    script = ["compile %s messages" % model.name, "open %s %s False" % (language, base)]
    script += ["variable " + v for v in variables] + ["function " + f for f in functions] + ["close"]
    done = subprocess.run([options.commands], input="\n".join(script) + "\n", cwd=folder, capture_output=True,
                          text=True, check=False)
    messages = (folder / "messages").read_text() + (folder / (base + ".erf")).read_text()
    if done.returncode or "Error" in messages:
        raise SystemExit("%s in %s: %s%s" % (model.name, language, messages, done.stderr))
    return base


def templates(folder, base):
    """Wrapper, pattern and argument list of each function in the link template.

    Of functions with several results the list ends with the names of the results, which stay symbols in the host and
    which no wrapper reads.
    """
    text = re.sub(r"(, )?zc_O\d+", "", (folder / (base + ".tm")).read_text())
    return re.findall(r":Function: *(\w+)\n:Pattern: *(.*)\n:Arguments: *(.*)\n", text)


def initial_values(model, variables):
    """The values that the model gives to the variables; in a compiled program they have none."""
    values = {}
    for variable in variables:
        name = variable.split("`")[-1]
        found = re.search(r"^(?:real|int) %s := ([^;]*);" % name, model.read_text(), re.MULTILINE)
        if found:
            values[name] = found[1].replace("*^", "e")
    return values


def fortran_program(folder, base, values, options):
    entries = [(w.rstrip("_"), p, a) for w, p, a in templates(folder, base)]
    lines = ["program main", "use ZentricaPrecision", "use AlgeLinkInterface", "use zc_%s" % base, "implicit none"]
    lines += ["external :: " + wrapper for wrapper, _, _ in entries]
    lines += ["%s = %s_zc_real" % (n, v) if re.search("[.e]", v) else "%s = %s" % (n, v) for n, v in values.items()]
    lines += ["call ALIF_INSTALL('%s', '%s', %s)" % (p, a, w) for w, p, a in entries]
    lines += ["call ALIF_MAIN()", "end program", ""]
    (folder / "main.f90").write_text("\n".join(lines))
    report = compile_set(folder, base, options)
    report += command(folder, options.fortran, "-cpp", "-O2", "-ffree-line-length-none", "-I", options.modules,
                      "main.f90", base + ".o", base + "if.o", *options.fortran_libraries, "-lstdc++", "-lpthread",
                      "-o", "fortran")
    if report:
        raise SystemExit(report)
    return folder / "fortran"


def cplusplus_program(folder, base, values, options):
    entries = templates(folder, base)
    declarations = (folder / (base + ".icc")).read_text() + (folder / (base + ".h")).read_text()
    lines = ['#include "%s.h"' % base, '#include "%s.icc"' % base, '#include "alginter.h"']
    lines += ['extern "C" void %s();' % wrapper for wrapper, _, _ in entries]
    lines += ["const AL_IF_function functions[] = {"]
    lines += ['{"%s", "%s", %s},' % (p, a, w) for w, p, a in entries] + ["};", "int main(int argc, char** argv) {"]
    for name, value in values.items():
        lines.append("%s = %s;" % (re.search(r"extern \w+ (\w+_T%s);" % name, declarations)[1], value))
    lines += ["return AL_IF_main(argc, argv, functions, %d);" % len(entries), "}", ""]
    (folder / "main.cc").write_text("\n".join(lines))
    include = [word for path in options.cxx_include for word in ("-I", path)]
    report = command(folder, options.cxx, "-std=c++17", "-O2", *include, "main.cc", base + ".cc", base + "if.cc",
                     *options.cxx_libraries, "-lpthread", "-o", "cplusplus")
    if report:
        raise SystemExit(report)
    return folder / "cplusplus"


# ---- arguments


def parameters(folder, base):
    """Of each function its arguments: name, type and sizes, as the Fortran text declares them."""
    text = re.sub(r"&\s*\n\s*&?", "", (folder / (base + ".f90")).read_text())
    found = {}
    for head in re.finditer(r"^ *(?:pure |recursive )*(?:function|subroutine) +(\w+)\((.*?)\)", text, re.MULTILINE):
        body = text[head.end():]
        names = [n.strip() for n in head[2].split(",") if n.strip() and not n.strip().startswith("zc_O")]
        found[head[1].lower()] = [(n, *declaration(body, n)) for n in names]
    return found


def declaration(body, name):
    """Type and sizes of an argument, the sizes in the order of the model."""
    line = re.search(r"^ *(\w+).*intent\(in\) :: %s(?:\((.*)\))?$" % re.escape(name), body, re.MULTILINE)
    kind, sizes = line.groups()
    return kind, sizes.split(",")[::-1] if sizes else []


def scalar(kind, dice, positive):
    if kind == "integer":
        return dice.randint(2, 6) if positive else dice.choice([-5, -4, -3, -2, -1, 1, 2, 3, 4, 5])
    if kind == "logical":
        return dice.randint(0, 1)
    if kind == "character":
        return "".join(dice.choice("abc xyz") for _ in range(dice.randint(0, 9))).rstrip()
    return dice.uniform(0.2, 2.0) if positive else dice.uniform(-3.0, 3.0)


def array(kind, sizes, dice, positive):
    if not sizes:
        return scalar(kind, dice, positive)
    return [array(kind, sizes[1:], dice, positive) for _ in range(sizes[0])]


def random_arguments(arguments, dice, signed):
    """Values for all arguments. Numbers that are sizes, indices or of a model without signs are above zero."""
    sizes_used = " ".join(size for _, _, sizes in arguments for size in sizes)
    values = {}
    for name, kind, sizes in arguments:
        if not sizes:
            index = name == "i" or name in re.findall(r"\w+", sizes_used)
            values[name] = scalar(kind, dice, index or not signed)
            if name == "i":
                values[name] = dice.randint(1, 2)
    for name, kind, sizes in arguments:
        if sizes:
            counts = [dice.randint(2, 5) if s == ":" else eval(s, {}, values) for s in sizes]
            values[name] = array(kind, counts, dice, not signed)
    return [values[name] for name, _, _ in arguments]


# ---- known values


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def columns(m):
    return [list(c) for c in zip(*m)]


# What the functions of the models are, in another way than the models say it. For the examples examples/run-*.cc do that.
FORMULAS = {
    "forms": {
        "nested": lambda a: (a + 1)**3,
        "product": lambda a, b: [[dot(r, c) for c in columns(b)] for r in a],
        "line": lambda i, a: a[i - 1],
        "raised": lambda a, v: [v, a[1][:2] + [1.5]] + a[2:],
        "steps": lambda n: 0.001 * n * (n + 1) / 2,
        "factorial": math.factorial,
        "several": lambda x: [x * x, 7, [x, -x]],
    },
    "agree": {
        "inverse": lambda x: math.pi / 2 + math.atan(x) + math.asinh(x) + math.acosh(x * x + 2) + math.atanh(x / 4),
        "reciprocal": lambda x: (math.cos(x) + 1) / math.sin(x) + (math.cosh(x) + 1) / math.sinh(x) + 1 / math.cos(x)
        + 1 / math.cosh(x),
        "growth": lambda x: math.e**x + math.log1p(x * x) + math.hypot(abs(x)**0.5, 0) + math.e * x + math.pi,
        "rounded": lambda x: math.floor(x) + 10 * math.ceil(x) + 100 * round(x) + 1000 * math.trunc(x)
        + 10000 * ((x > 0) - (x < 0)),
        "halves": lambda n: n + n % 2,
        "signs": lambda n: 11 * ((n > 0) - (n < 0)) + 2 * n,
        "fraction": lambda x: math.fmod(x, 1),
        "remainder": lambda a, b: a % b,
        "remainders": lambda x, y, n: x % y + 10 * (x % n) + 100 * (n % y),
        "quotient": lambda n: n * n // 3,
        "extremes": lambda n, x: max(0, x) + 10 * min(n, x) + 100 * max(n, 1) + 1000 * min(x, 0.5),
        "angle": lambda x, y, n: math.atan2(y, x) + 10 * math.atan2(x, n) + 100 * math.atan2(1, n),
        "ratio": lambda a, b: a / b + 1 / 3,
        "product": dot,
        "applied": lambda a, v: [dot(r, v) for r in a],
        "fromLeft": lambda v, a: [dot(v, c) for c in columns(a)],
        "matrices": lambda a, b: [[dot(r, c) for c in columns(b)] for r in a],
        "turned": columns,
        "across": lambda a, b: [a[i - 2] * b[i - 1] - a[i - 1] * b[i - 2] for i in range(3)],
        "outer": lambda a, b: [[x * y for y in b] for x in a],
        "bounds": lambda a: max(a) - 3 * min(a),
        "rows": lambda x, y: [[x, y, 1.0], [2.0, x * y, 3.5]],
        "joined": lambda a, b: a + b,
        "shortened": lambda a: a[1:],
        "longer": lambda a, x, n: [x * v for v in a],
        "element": lambda a, b: dot(a[0], columns(b)[1]) + a[1][2] - b[2][0],
        "sizes": lambda a: 23,
        "shapes": lambda a: [2, 3],
        "receiver": lambda x, n: x * n + 10 * (n + 1) + x,
    },
}


# ---- comparing


def flat(value):
    if isinstance(value, list):
        return [x for v in value for x in flat(v)] + ["of", len(value)]
    return [value]


def close(a, b, absolute):
    if isinstance(a, float) or isinstance(b, float):
        if not isinstance(a, (int, float)) or not isinstance(b, (int, float)):
            return False
        relative = 1e-12 if absolute else TOLERANCE
        return (math.isnan(a) and math.isnan(b)) or math.isclose(a, b, rel_tol=relative, abs_tol=absolute)
    return a == b


def agree(a, b, absolute=0.0):
    """Whether two answers are alike. Formulas, which may differ absolutely, round in another order than functions."""
    a, b = flat(a), flat(b)
    return len(a) == len(b) and all(close(p, q, absolute) for p, q in zip(a, b))


def listed(model):
    """The functions and variables of a model that the command scripts of the tests name."""
    functions, variables = [], []
    for script in [TESTS / area / (model.stem + ".cmds") for area in ("fortran", "cplusplus")]:
        text = script.read_text() if script.exists() else ""
        for command, names in re.findall(r"^(function|variable) (.*)", text, re.MULTILINE):
            (functions if command == "function" else variables).extend(re.findall(r"\S+`\S+", names))
    return (sorted(set(f for f in functions if f not in NOT_COMPARED)),
            sorted(v for v in set(variables) if v != "Forms`pole"))


def compare(model, options):
    """Calls the functions of a model in both languages; the number of calls, and the differences."""
    functions, variables = listed(model)
    values = initial_values(model, variables)
    dice = random.Random(model.name)
    failures, calls = [], 0
    with tempfile.TemporaryDirectory() as made:
        folders = [pathlib.Path(made) / language for language in ("fortran", "cplusplus")]
        for folder in folders:
            folder.mkdir()
        base = generate(folders[0], model, "Fortran90", functions, variables, options)
        generate(folders[1], model, "C++", functions, variables, options)
        signatures = parameters(folders[0], base)
        programs = [make(folder, base, values, options)
                    for make, folder in zip((fortran_program, cplusplus_program), folders)]
        with ozlink.run([programs[0]], stdout=subprocess.DEVNULL) as fortran, \
                ozlink.run([programs[1]], stdout=subprocess.DEVNULL) as cplusplus:
            for function in functions:
                name = function.split("`")[-1]
                for _ in range(ROUNDS):
                    arguments = random_arguments(signatures[name.lower()], dice, model.stem == "agree")
                    answers = [program.call(name, *arguments) for program in (fortran, cplusplus)]
                    calls += 1
                    if not agree(*answers):
                        failures.append("%s%s: Fortran %s, C++ %s" % (function, arguments, *answers))
                        break
                    wanted = FORMULAS.get(model.stem, {}).get(name, lambda *_: answers[0])(*arguments)
                    if not agree(answers[0], wanted, 1e-13):
                        failures.append("%s%s gives %s, not %s" % (function, arguments, answers[0], wanted))
                        break
            fortran.message("terminate")
            cplusplus.message("terminate")
    print("%-10s %2d functions, %5d calls" % (model.stem, len(functions), calls))
    return failures


def check_agreement(options):
    failures = []
    models = sorted((TESTS.parent / "examples").glob("*.oz"))
    models += [TESTS / "models" / "forms.oz", TESTS / "fortran" / "agree.oz"]
    for model in models:
        if listed(model)[0]:
            failures += compare(model, options)
    return failures


# ---- callbacks


def check_callbacks(options):
    """A function that asks the host, and one that calls an external function."""
    model = TESTS / "fortran" / "demo.oz"
    functions = ["Demo`" + f for f in ("factorial", "host", "bessel", "pair", "largest", "reach")]
    with tempfile.TemporaryDirectory() as made:
        folder = pathlib.Path(made)
        base = generate(folder, model, "Fortran90", functions, ["Demo`table"], options)
        (folder / "bessel.f90").write_text("function bessel(order, x) result(y)\nuse ZentricaPrecision\nimplicit none\n"
                                           "integer(zc_int), intent(in) :: order\nreal(zc_real), intent(in) :: x\n"
                                           "real(zc_real) y\ny = order*x\nend function\n")
        report = command(folder, options.fortran, "-I", options.modules, "-c", "bessel.f90")
        options.fortran_libraries.insert(0, "bessel.o")
        program = fortran_program(folder, base, {"table": "0.5"}, options)
        options.fortran_libraries.pop(0)
        with ozlink.run([program]) as link:
            link.put(ozlink.Function("CallPacket", link.definitions["pair"][0], [2.5]))
            asked = link.get_packet()
            link.put(ozlink.Function("ReturnPacket", 7.25))
            answer = link.get_packet()
            reach = link.call("reach", 0.75)
            link.message("terminate")
    failures = [report] if report else []
    if asked != ozlink.Function("EvaluatePacket", ozlink.Function("host", 2.5, 2, [1.0, 2.0])) or answer != [2.5, 7.25]:
        failures.append("the callback asks %s, and the answer is %s" % (asked, answer))
    if not math.isclose(reach, math.asinh(1.25) * 0.75 * math.tan(0.75), rel_tol=1e-14):
        failures.append("reach gives %s" % reach)
    return failures


CHECKS = {"cplusplus": check_cplusplus, "sets": check_sets, "agree": check_agreement, "callbacks": check_callbacks}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=list(CHECKS))
    parser.add_argument("--commands", required=True, type=pathlib.Path, help="the program that runs command scripts")
    parser.add_argument("--fortran", default="gfortran", help="the Fortran compiler")
    parser.add_argument("--modules", type=pathlib.Path, help="the folder of the runtime's modules")
    parser.add_argument("--fortran-libraries", nargs="*", default=[], help="libraries of Fortran programs")
    parser.add_argument("--cxx", default="c++", help="the C++ compiler")
    parser.add_argument("--cxx-include", nargs="*", default=[], help="folders of the headers of C++")
    parser.add_argument("--cxx-libraries", nargs="*", default=[], help="libraries of C++ programs")
    options = parser.parse_args()
    failures = CHECKS[options.what](options)
    for failure in failures:
        print("FAILED", failure)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
