#!/usr/bin/env python3
"""Measures parallel loops: what a task costs beyond its work, and how much faster two cores are than one.

    bench/loops/loops.py      builds what it needs, prints a table and the goals

The loops are generated Fortran, linked with each build of runtime/parallel. Times are by the clock, so the machine must
have two cores with nothing else to do. bench/run has the table in its report.
"""

import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
RUNTIME = ROOT / "runtime"
MODULES = ["ZentricaPrecision", "zc_numbers", "ZentricaSheep", "zc_system"]
TASKS = {"cheap": 1000000, "costly": 50000}
WORK = 10e-6  # seconds of a costly task

# Compiler, its options, numbers of processes and threads.
BUILDS = {
    "serial": ("g++", [], [(1, 1)]),
    "OpenMP": ("g++", ["-fopenmp"], [(1, 1), (1, 2)]),
    "MPI": ("mpicxx", ["-DZC_MPI"], [(1, 1), (2, 1)]),
}


def run(*command, **kwargs):
    done = subprocess.run([str(c) for c in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False, **kwargs)
    if done.returncode != 0:
        sys.exit("%s failed\n%s" % (" ".join(map(str, command)), (done.stdout + done.stderr)[-2000:]))
    return done.stdout


def compile_program(folder):
    """The objects of the program, without the library."""
    run(ROOT / "build" / "ozgen", "-p", "Fortran90", folder, "Loops", HERE / "loops.oz", "f:Loops/settled",
        "f:Loops/cheap", "f:Loops/costly")
    run(RUNTIME / "parallel" / "arrange", "Loops", cwd=folder)
    sources = [RUNTIME / "fortran" / (name + ".f90") for name in MODULES]
    for source in sources + [folder / "parallel" / "Loops.f90", HERE / "main.f90"]:
        run("gfortran", "-O2", "-cpp", "-frecursive", "-w", "-fallow-argument-mismatch", "-I", folder / "parallel",
            "-I", RUNTIME / "fortran", "-c", source, cwd=folder)
    return [folder / (name + ".o") for name in MODULES + ["Loops", "main"]]


def link(folder, build, objects):
    compiler, flags, _ = BUILDS[build]
    program = folder / build
    run(compiler, "-std=c++17", "-O2", *flags, "-o", program, RUNTIME / "parallel" / "zc_parallel.cc", *objects,
        "-lgfortran")
    return program


def room_for_arrays():
    """The loops' arrays are local variables."""
    resource.setrlimit(resource.RLIMIT_STACK, (resource.getrlimit(resource.RLIMIT_STACK)[1],) * 2)


def measure(program, processes, threads, steps):
    start = ["mpirun", "--allow-run-as-root", "-n", str(processes)] if program.name == "MPI" else []
    environment = dict(os.environ, OMP_NUM_THREADS=str(threads), OMP_STACKSIZE="256M")
    text = run(*start, program, steps, env=environment, preexec_fn=room_for_arrays)
    return [float(word) for word in text.split()]


def can_run():
    return shutil.which("gfortran") and shutil.which("mpicxx") and shutil.which("mpirun") and os.cpu_count() > 1


def rows():
    """(build, processes, threads, seconds of the cheap tasks, of the costly ones, of a plain cheap loop) each."""
    made = []
    with tempfile.TemporaryDirectory(prefix="ozloops-") as name:
        folder = pathlib.Path(name)
        objects = compile_program(folder)
        programs = {build: link(folder, build, objects) for build in BUILDS}
        steps = 1000
        steps = round(steps * WORK * TASKS["costly"] / measure(programs["serial"], 1, 1, steps)[2])
        for build, (_, _, launches) in BUILDS.items():
            for processes, threads in launches:
                cheap, plain, costly, _ = measure(programs[build], processes, threads, steps)
                made.append((build, processes, threads, cheap, costly, plain))
    return made


def report():
    """The table, and rows for a table of goals: what, goal, measured, whether it is reached."""
    lines = ["| build | processes | threads | cheap tasks: ns each | beyond a plain loop: ns each "
             "| costly tasks: microseconds each | speed-up |", "|---|--:|--:|--:|--:|--:|--:|"]
    goals, made = [], rows()
    alone = min(costly for _, processes, threads, _, costly, _ in made if processes * threads == 1)
    for build, processes, threads, cheap, costly, plain in made:
        beyond = (cheap - plain) / TASKS["cheap"] * 1e9
        faster = alone / costly  # than the fastest on one core, whatever its build
        both = processes * threads == 2
        lines.append("| %s | %d | %d | %.1f | %.1f | %.2f | %s |"
                     % (build, processes, threads, cheap / TASKS["cheap"] * 1e9, beyond,
                        costly / TASKS["costly"] * 1e6, "%.2f" % faster if both else ""))
        if both:
            goals.append(("tasks, " + build, "speed-up at least 1.8 on 2 cores", "%.2f" % faster, faster >= 1.8))
            goals.append(("tasks, " + build, "at most 200 ns beyond a plain loop", "%.0f ns" % beyond, beyond <= 200))
    return "\n".join(lines), goals


def main():
    script = "cd '%s' && . tools/setup.sh && need build check && cmake --preset release >/dev/null && " \
             "cmake --build --preset release --target ozgen >/dev/null" % ROOT
    if subprocess.run(["bash", "-c", script], stdin=subprocess.DEVNULL, check=False).returncode != 0:
        sys.exit("bench/loops/loops.py: the build failed")
    if not can_run():
        sys.exit("bench/loops/loops.py: needs gfortran, MPI and two cores")
    table, goals = report()
    print(table + "\n")
    for what, goal, measured, reached in goals:
        print("%-14s %-36s %10s   %s" % (what, goal, measured, "reached" if reached else "missed"))


if __name__ == "__main__":
    main()
