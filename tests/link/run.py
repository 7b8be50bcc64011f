#!/usr/bin/env python3
"""Tests of the compiler on a link: as an installed program, as a compile server, with good and bad peers.

    tests/link/run.py --oz build/oz --ozpeer build/ozpeer --oztm build/oztm

Each test has a folder of its own, for its files and for the link's keys. The scripts are ozpeer's; docs/link.md tells
their lines.
"""

import argparse
import glob
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools" / "python"))
sys.dont_write_bytecode = True
import ozlink  # noqa: E402

OZ = OZPEER = OZTM = None

DEFINITIONS = """\
define 3 CompileInternal { infile, outfile, errfile, options }
define 4 OpenFileInternal { lang, file, parallel }
define 5 CloseFileInternal { }
define 6 GenerateVariableInternal { name }
define 7 GenerateFunctionInternal { name, disableAlgeLink }
define 8 GenerateEvaluateFunctionInternal { name, body, disableAlgeLink }
"""

MODEL = """\
model Small;
real k := 2.5;
real f[real x_, real y_] := x*y + k;
class Tank(area)
  reveal:
    real level := 1.0;
    real volume := area*level;
end Tank;
instance t inherits Tank(3.0)
end t;
"""

CONNECTION = """
Off[General::spell]
Off[LinkObject::linkx]
If[ToString[Definition[CodeGeneration`Private`Link]]=!="Null", Uninstall[CodeGeneration`Private`Link]];
On[LinkObject::linkx]
On[General::spell]
CodeGeneration`Private`Link = Install["PORT", LinkMode->Connect, LinkProtocol->"TCP", LinkHost->"NODE"]
$Epilog:=Uninstall[CodeGeneration`Private`Link]
CodeGeneration`Private`Logfile = "LOG"
"""


class LinkTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="ozlink.")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        (self.folder / "run").mkdir()
        os.environ["XDG_RUNTIME_DIR"] = str(self.folder / "run")
        os.environ.pop("OZMAT_DISABLE", None)
        self.write("m.oz", MODEL)

    def write(self, name, text):
        (self.folder / name).write_text(text)

    def read(self, name):
        return (self.folder / name).read_text()

    def oz(self, *args, **options):
        return subprocess.run([OZ, "-s", *args], cwd=self.folder, capture_output=True, timeout=300, **options)

    def server(self, *args):
        """Starts a server; its port. It ends with its link, or at the end of the test."""
        done = self.oz("-d", "-o", "conn.m", *args, "m.oz")
        port = re.search(r'Install\["(\d+)"', self.read("conn.m"))
        self.addCleanup(self.stop_server, port[1])
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return int(port[1])

    def stop_server(self, port):
        if (self.folder / "run" / "ozlink" / ("tcp-%s.key" % port)).exists():
            subprocess.run([OZPEER, "connect", port], input=b"close\n", capture_output=True, timeout=60)

    def peer(self, args, script, status=0):
        """What ozpeer prints for a script, without the definitions."""
        done = subprocess.run([OZPEER, *args], input=script, cwd=self.folder, capture_output=True, text=True, timeout=300)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertTrue(DEFINITIONS in done.stdout or status == 3, done.stdout)
        return done.stdout.replace(DEFINITIONS, "")

    def installed(self, script, status=0):
        return self.peer(["run", "--", OZ], script, status)

    def same_files(self, one, other):
        """Whether two file sets are the same but for their names."""
        names = sorted(p.name[len(one):] for p in self.folder.iterdir() if re.match(one + r"(if|lm|Ext)?\.", p.name))
        self.assertGreater(len(names), 4)
        for name in names:
            self.assertEqual(self.read(one + name).replace(one, other), self.read(other + name), name)

    # ---- the order of calls

    def test_both_modes_write_what_the_command_line_writes(self):
        self.write("byline.oz", MODEL)
        body = "Plus[P$`x, Times[P$`x, P$`y], Times[P$`x, P$`y]]"
        self.write("body", '"%s"' % body)
        for language in ["C++", "Fortran90", "HPF"]:
            for options, call in [(["-v", ""], 'GenerateVariableInternal "Hold[]"'),
                                  (["-f", "Small/f"], 'GenerateFunctionInternal "Hold[Small`f]" 0'),
                                  (["-e", "Small/f", "-E", "body"],
                                   'GenerateEvaluateFunctionInternal "Hold[Small`f]" "%s" 0' % body)]:
                with self.subTest(language=language, call=call):
                    done = self.oz("-l", language, *options, "byline.oz")
                    self.assertEqual(done.returncode, 0, done.stderr)
                    calls = 'OpenFileInternal "bylink" "%s" False\n%s\nexpect "OK"\nCloseFileInternal\n' % (language, call)
                    out = self.installed('CompileInternal "m.oz" "" "err" ""\n' + calls)
                    self.assertEqual(out, 'answer "OK"\n' * 4 + "status 1\n")
                    self.same_files("bylink", "byline")
                    out = self.peer(["connect", str(self.server())], calls)
                    self.assertEqual(out, 'answer "OK"\n' * 3)
                    self.same_files("bylink", "byline")

    def test_a_second_compile_takes_its_options_and_its_model(self):
        self.write("second.oz", "model Second;\nreal g[real x_] := x + 1;\n")
        out = self.installed('CompileInternal "m.oz" "" "err" "-u -o one.m -t one.tree"\n'
                             'CompileInternal "second.oz" "" "err" "-u -o two.m"\n'
                             'CompileInternal "second.oz" "" "err" "-q"\n'
                             'CompileInternal "second.oz" "" "err" "more names"\n'
                             'OpenFileInternal "x" "c++" True\n'
                             'GenerateFunctionInternal "Hold[Small`f]" 0\n')
        self.assertEqual(out, 'answer "OK"\n' * 2 + 'answer "Internal error"\n' * 2 + 'answer "OK"\n'
                         'answer "Function not found: Small`f"\nstatus 1\n')
        self.oz("-u", "-o", "direct.m", "second.oz")
        self.assertEqual(self.read("two.m"), self.read("direct.m"))

    # ---- wrong calls

    def test_wrong_calls_answer_failed_and_the_loop_goes_on(self):
        long_name = "x" * 5000
        failing = ["call 0", "call 1 1", "call 2", "call 9",  # the licence commands that do not exist
                   "call -1", "call 99999999999", "call x",
                   "packet 7", "packet 7 5 6", "packet 7 5 List", "packet 7 5 Sequence[]",  # no list
                   "call 5 1", "call 6", 'call 4 "C++" "x" False 1',  # the number of arguments
                   "call 6 1", "call 6 {1, {2, f[3.5]}}", 'call 4 "C++" "x" "False"',  # their types
                   'call 7 "Hold[Small`f]" x', 'call 7 "Hold[Small`f]" 3000000000', 'call 6 "a\\x00b"']
        rows = [(line, "$Failed") for line in failing]
        rows += [("CloseFileInternal", '"No file open, no file closed."'),
                 ('GenerateVariableInternal "Hold[k]"', '"No file open for code generation"'),
                 ('GenerateFunctionInternal "nonsense" 0', '"No file open for code generation"'),
                 ('GenerateEvaluateFunctionInternal "nonsense" "1" 0', '"No file open for code generation"'),
                 ('OpenFileInternal "x" "Pascal" False', '"Invalid target language, try Fortran90, HPF, or C++"'),
                 ('OpenFileInternal "no/folder/x" "C++" False', '"Could not open errfile"'),
                 ('CompileInternal "m.oz" "" "no/folder/err" ""', '"Could not open errfile"'),
                 ('OpenFileInternal "x" "hpf" True', '"OK"'),
                 ('GenerateVariableInternal "Hold[%s]"' % long_name, '"Variable not found: %s"' % long_name),
                 ('GenerateFunctionInternal "Hold[k]" 0', '"Function not found: k"'),
                 ("CloseFileInternal", '"OK"')]
        script = "\n".join(line + "\nanswer" if line.startswith("packet") else line for line, _ in rows)
        wanted = "".join("answer %s\n" % answer for _, answer in rows)
        self.assertEqual(self.installed('CompileInternal "m.oz" "" "err" ""\n' + script),
                         'answer "OK"\n' + wanted + "status 1\n")
        self.assertEqual(self.peer(["connect", str(self.server())], script), wanted)

    def test_a_fatal_message_tells_the_host_and_ends_the_program(self):
        calls = 'OpenFileInternal "x" "C++" False\nGenerateVariableInternal "strange"\nwait-end\n'
        out = self.installed('CompileInternal "m.oz" "" "err" ""\n' + calls)
        self.assertEqual(out, 'answer "OK"\nanswer "OK"\nanswer "FatalError"\nend closed\nstatus 1\n')
        self.assertIn("entity with strange name:\nstrange", self.read("x.erf"))
        out = self.installed('CompileInternal "missing.oz" "" "err" ""\nwait-end 1\n')
        self.assertEqual(out, 'answer "FatalError"\nend closed\nstatus 1\n')
        # A server says nothing, and leaves its log.
        port = self.server()
        log = pathlib.Path(re.search('Logfile = "(.*)"', self.read("conn.m"))[1])
        self.assertEqual(self.peer(["connect", str(port)], calls, status=2), 'answer "OK"\nend lost\n')
        self.assertTrue(log.exists())
        log.unlink()

    # ---- link programs; those of the examples are called in their own tests

    def test_a_template_without_sense_leaves_no_source(self):
        def block(function="AL_f", pattern="f[x_Real]", arguments="{x}", rest=":End:"):
            return ":Begin:\n:Function: %s\n:Pattern: %s\n:Arguments: %s\n%s\n" % (function, pattern, arguments, rest)
        rows = [("", "oztm: t.tm has no function"),
                (":Evaluate: f;\n/* a\nb", "t.tm:3: the file ends within a comment"),
                ("/* a */ f", "t.tm:1: this is no line of a template: f"),
                (":End:", "t.tm:1: this is no line of a template: :End:"),
                ("\x01", "t.tm:1: this is no text: it has control characters"),
                ("\n" + block(rest=""), "t.tm:2: this block has no :End:"),
                (block(rest=":Begin:"), "t.tm:5: this is no line of a block: :Begin:"),
                (block(rest=":Pattern: f[]"), "t.tm:5: a second line: :Pattern:"),
                (":Begin:\n:Function: AL_f\n:End:", "t.tm:1: this block lacks a line: :Pattern:"),
                (block("system"), "t.tm:2: no wrapper is named like this: system"),
                (block("AL_f();g"), "t.tm:2: no wrapper is named like this: AL_f();g"),
                (block(pattern="f[x_Real"), "t.tm:3: this is no pattern of a call: f[x_Real"),
                (block(pattern="f[x_/;g[x)]"), "t.tm:3: this is no pattern of a call: f[x_/;g[x)]"),
                (block(arguments="x"), "t.tm:4: this is no list of names: x"),
                (block(arguments="{}"), "t.tm:4: an argument of the pattern is not listed: x"),
                (block(arguments="{x, x}"), "t.tm:4: the pattern has no such argument, or it is listed twice: x"),
                (block(rest=":ReturnType: Real\n:End:"), "t.tm:5: only Manual is possible here: :ReturnType:Real"),
                (block() + block(), "t.tm:6: a second definition; the first one stands in: t.tm:1"),
                (block() + block("al_g_", "g[]", "{}"), "t.tm:7: wrappers in C++ and in Fortran make no one program")]
        for template, message in rows:
            with self.subTest(message=message):
                self.write("t.tm", template)
                self.write("out.cc", "former")
                done = self.oztm("-o", "out.cc", "t.tm")
                self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", message + "\n"))
                self.assertEqual(self.read("out.cc"), "former")
        self.write("t.tm", block(pattern='f[x_/;g["],[", x]]', arguments="{x, zc_O1}"))
        for output, status in [("/dev/full", 1), ("no/folder/t.cc", 1), ("out.cc", 0)]:
            self.assertEqual(self.oztm("-o", output, "t.tm").returncode, status)
        self.assertIn(r'{"f[x_/;g[\"],[\", x]]", "{x}", AL_f}', self.read("out.cc"))
        self.assertEqual(sorted(p.name for p in self.folder.glob("*.part")), [])
        for args in [[], ["-x"], ["-o"]]:
            self.assertEqual(self.oztm(*args).returncode, 2)

    def oztm(self, *args):
        return subprocess.run([OZTM, *args], cwd=self.folder, capture_output=True, text=True, timeout=60)

    # ---- messages and ends

    def test_how_the_link_ends_decides_the_status(self):
        for script, out in [("message terminate\nwait-end 0\n", "end closed\nstatus 0\n"),
                            ("close\n", "status 1\n"),
                            ("drop\n", "status 1\n"),
                            ("packet 3 1\nwait-end 1\n", "end closed\nstatus 1\n"),
                            ("packet 99 1\nwait-end 1\n", "end closed\nstatus 1\n"),
                            ("raw FF\nwait-end 1\n", "end lost\nstatus 1\n"),
                            ("frame 9\nwait-end 1\n", "end lost\nstatus 1\n"),
                            ("message interrupt\nCloseFileInternal\n",
                             'answer "No file open, no file closed."\nstatus 1\n')]:
            with self.subTest(script=script):
                out_now = self.installed(script).replace("end lost", "end closed")
                self.assertEqual(out_now, out.replace("end lost", "end closed"))

    def test_an_abort_while_a_command_runs_changes_its_answer(self):
        os.mkfifo(self.folder / "slow.oz")
        for message in ["abort", "interrupt"]:
            with ozlink.run([OZ], cwd=self.folder) as program:
                call = threading.Thread(target=self.expect_abort, args=(program,))
                call.start()
                with open(self.folder / "slow.oz", "w") as model:  # opens when the compiler reads
                    program.message(message)
                    program.ping()  # the message has been seen
                    model.write(MODEL)
                call.join()
                self.assertEqual(program.CloseFileInternal(), "No file open, no file closed.")
                self.assertEqual(program.OpenFileInternal("x", "C++", False), "OK")

    def expect_abort(self, program):
        with self.assertRaisesRegex(ozlink.CallFailed, "aborted"):
            program.CompileInternal("slow.oz", "", "err", "")

    def test_a_resume_packet_is_refused(self):
        out = self.installed('packet 18 LinkObject["front", 1]\nanswer\npacket 3 Null\npacket 17\nCloseFileInternal\n')
        self.assertEqual(out, 'packet 64 Module[{Set[me, $ParentLink]}, CompoundExpression['
                         'Set[$ParentLink, LinkObject["front", 1]], '
                         'Message[MessageName[$ParentLink, "notfe"], me], me]]\n'
                         'answer "No file open, no file closed."\nstatus 1\n')

    def test_a_program_without_a_good_link(self):
        for args in [[], ["m.oz"], ["-linkmode", "connect", "-linkname", "1"], ["-linkmode"],
                     ["-linkmode", "connect", "-linkname", "x"]]:
            done = subprocess.run([OZ, *args], cwd=self.folder, capture_output=True, text=True, timeout=60)
            self.assertEqual((done.returncode, done.stdout), (1, ""), args)

    # ---- the server

    def test_the_connection_text(self):
        port = self.server("-u")
        text = self.read("conn.m")
        log = re.search('Logfile = "(/tmp/oz\\.log\\.\\w{6})"', text)[1]
        self.oz("-u", "-o", "plain.m", "m.oz")
        wanted = CONNECTION.replace("PORT", str(port)).replace("NODE", os.uname().nodename).replace("LOG", log)
        self.assertEqual(text, self.read("plain.m") + wanted)
        state = os.stat(log)
        self.assertEqual((state.st_mode & 0o777, state.st_size), (0o600, 0))
        self.assertEqual(self.peer(["connect", str(port)], "message terminate\nwait-end\n"), "end closed\n")
        self.wait_until(lambda: not os.path.exists(log))

    def test_each_server_has_a_port_and_strangers_get_nowhere(self):
        one = self.server()
        two = self.server()
        self.assertNotEqual(two, one)
        out = self.peer(["connect", str(one)], "badkey\nbadversion\nstrangers 1000\nCloseFileInternal\n")
        self.assertEqual(out, 'refused\nrefused\nanswer "No file open, no file closed."\n')
        with ozlink.connect(two) as server:
            # One link, one peer; the port stays the server's.
            self.peer(["connect", str(two)], "", status=3)
            three = self.server()
            self.assertNotEqual(three, two)
            self.assertEqual(server.CloseFileInternal(), "No file open, no file closed.")

    def test_the_log_is_kept_on_demand(self):
        os.environ["OZMAT_DISABLE"] = "unlink_log"
        self.peer(["connect", str(self.server())], "close\n")
        os.unlink(re.search('Logfile = "(.*)"', self.read("conn.m"))[1])

    def test_a_server_from_within_a_program(self):
        with ozlink.run([OZ], cwd=self.folder) as program:
            self.assertEqual(program.CompileInternal("m.oz", "", "err", "-d -u -o inner.m"), "OK")
            with ozlink.connect_file(self.folder / "inner.m") as server:
                self.assertEqual(server.OpenFileInternal("x", "C++", False), "OK")
                self.assertEqual(program.CloseFileInternal(), "No file open, no file closed.")
                self.assertEqual(server.GenerateVariableInternal("Hold[]"), "OK")

    def test_a_server_that_cannot_write_ends_and_its_caller_goes_on(self):
        (self.folder / "conn.m").symlink_to("/dev/full")
        before = set(glob.glob("/tmp/oz.log.*"))
        done = self.oz("-d", "-o", "conn.m", "m.oz")
        self.assertEqual((done.returncode, done.stdout), (0, b""))

        def told_in_a_log():
            for log in set(glob.glob("/tmp/oz.log.*")) - before:
                try:
                    if "Internal error in line " in pathlib.Path(log).read_text():
                        os.unlink(log)
                        return True
                except OSError:
                    pass  # another server's, which has ended meanwhile
            return False
        self.wait_until(told_in_a_log)

    def test_a_killed_side_is_noticed(self):
        program = ozlink.run([OZ], cwd=self.folder)
        program._process.send_signal(signal.SIGKILL)
        with self.assertRaises(ozlink.LinkError):
            program.CloseFileInternal()
        program.close()
        peer = subprocess.Popen([OZPEER, "run", "--", OZ], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                cwd=self.folder)
        peer.stdin.write("answer\n")  # waits for what never comes
        peer.stdin.flush()
        for line in peer.stdout:
            if line.startswith("define 8"):
                break
        program_id = int(subprocess.run(["ps", "-o", "pid=", "--ppid", str(peer.pid)], capture_output=True,
                                        text=True).stdout)
        peer.kill()
        peer.wait()
        peer.stdin.close()
        peer.stdout.close()
        self.wait_until(lambda: self.has_ended(program_id))

    def wait_until(self, condition):
        """Waits for what a process does after its link has ended. The bound is for a hanging one."""
        bound = time.monotonic() + 120
        while not condition():
            self.assertLess(time.monotonic(), bound)
            time.sleep(0.01)

    def has_ended(self, pid):
        try:
            with open("/proc/%d/stat" % pid) as file:
                return file.read().rpartition(")")[2].split()[0] == "Z"
        except OSError:
            return True


def main():
    global OZ, OZPEER, OZTM
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--oz", required=True)
    parser.add_argument("--ozpeer", required=True)
    parser.add_argument("--oztm", required=True)
    options, rest = parser.parse_known_args()
    OZ, OZPEER, OZTM = [os.path.abspath(p) for p in (options.oz, options.ozpeer, options.oztm)]
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
