#!/usr/bin/env python3
"""Times the space-map scan against du, ncdu and the parallel peers, cold and warm, in one run.

  bench/compare_walk.py TREE [--rounds N] [--tovrin PATH] [--cold-only | --warm-only]

TREE is made by bench/make_walk_tree.py. Each round runs every program once cold (dirty pages
written and the kernel's caches dropped before each run; needs root) and once warm (after an
unmeasured run that fills the caches), rotating the order of the programs from round to round
so that none always runs first. Reported per program: the median wall time, the median processor
time (user + system, steadier than wall time on a busy machine), and the peak resident memory.
It checks first that Tovrin's total equals `du -sx -B1`. Programs not installed are left out.

ncdu's export (`-o`) writes each folder out as it goes and keeps no tree, so its memory is that
of a streaming count; the space map keeps the whole tree to show it. The peak memory of ncdu
keeping its tree too (browsing it, on a pseudo-terminal) is measured once, warm, beside it.
"""
import argparse
import json
import os
import pty
import select
import shutil
import statistics
import subprocess
import sys
import tempfile
import time


def programs(tree, tovrin):
    found = {
        "tovrin": [tovrin, "--check-storage", tree, "--top", "0"],
        "du -sx": ["du", "-sx", tree],
        "ncdu": ["ncdu", "-0", "-x", "-o", "/dev/null", tree],
        "gdu": ["gdu", "-n", "-p", "-x", "-s", tree],
        "dua": ["dua", "--stay-on-filesystem", "aggregate", tree],
    }
    return {name: argv for name, argv in found.items() if shutil.which(argv[0])}


def drop_caches():
    subprocess.run(["sync"], check=True)
    with open("/proc/sys/vm/drop_caches", "w") as control:
        control.write("3\n")


def timed(argv):
    """(wall s, user + system s, peak KB) of one run, its output thrown away."""
    with tempfile.NamedTemporaryFile("r") as report:
        subprocess.run(["/usr/bin/time", "-o", report.name, "-f", "%e %U %S %M"] + argv,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        wall, user, system, peak = report.read().split()[-4:]
    return float(wall), float(user) + float(system), int(peak)


def ncdu_browsing_peak(tree):
    """Peak KB of ncdu scanning into its browser, read once it is shown; None without ncdu."""
    if not shutil.which("ncdu"):
        return None
    child, terminal = pty.fork()
    if child == 0:
        os.environ["TERM"] = "xterm"
        os.execvp("ncdu", ["ncdu", "-x", tree])
    started = last_output = time.monotonic()
    # The scan redraws its progress several times a second; the browser, once drawn, is still.
    while time.monotonic() - last_output < 1.5 or time.monotonic() - started < 2:
        if select.select([terminal], [], [], 0.2)[0]:
            try:
                os.read(terminal, 65536)
            except OSError:
                break
            last_output = time.monotonic()
    with open(f"/proc/{child}/status") as status:
        peak = next(int(line.split()[1]) for line in status if line.startswith("VmHWM:"))
    os.write(terminal, b"q")
    os.waitpid(child, 0)
    return peak


def check_totals(tree, tovrin):
    scan = json.loads(subprocess.run([tovrin, "--check-storage", tree, "--json"], check=True,
                                     capture_output=True, text=True).stdout)
    du = int(subprocess.run(["du", "-sx", "-B1", tree], check=True, capture_output=True,
                            text=True).stdout.split()[0])
    ours = scan["tree"]["bytes"]
    print(f"totals: tovrin {ours} bytes, du -sx -B1 {du} bytes: "
          + ("equal" if ours == du else "DIFFERENT"))
    return ours == du


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("tree")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--tovrin", default=os.path.join(os.path.dirname(__file__), "..",
                                                         "build", "tovrin"))
    parser.add_argument("--cold-only", action="store_true")
    parser.add_argument("--warm-only", action="store_true")
    options = parser.parse_args()
    tovrin = os.path.abspath(options.tovrin)
    if not check_totals(options.tree, tovrin):
        sys.exit(1)
    tools = programs(options.tree, tovrin)
    modes = [m for m in ("cold", "warm")
             if not (m == "cold" and options.warm_only) and not (m == "warm" and options.cold_only)]
    runs = {(mode, name): [] for mode in modes for name in tools}
    names = list(tools)
    for round_number in range(options.rounds):
        order = names[round_number % len(names):] + names[:round_number % len(names)]
        for mode in modes:
            for name in order:
                if mode == "cold":
                    drop_caches()
                else:
                    timed(tools["du -sx"])
                runs[(mode, name)].append(timed(tools[name]))
                wall, cpu, peak = runs[(mode, name)][-1]
                print(f"  round {round_number + 1} {mode:4} {name:7} {wall:6.2f} s wall "
                      f"{cpu:6.2f} s cpu {peak / 1024:6.1f} MB", flush=True)
    print(f"\n{os.cpu_count()} processors, load average {os.getloadavg()[0]:.2f} at the end")
    for mode in modes:
        print(f"\n{mode}: median wall, median cpu, peak memory")
        for name in names:
            results = runs[(mode, name)]
            print(f"  {name:7} {statistics.median(r[0] for r in results):6.2f} s "
                  f"{statistics.median(r[1] for r in results):6.2f} s "
                  f"{max(r[2] for r in results) / 1024:6.1f} MB")
    browsing = ncdu_browsing_peak(options.tree)
    if browsing is not None:
        print(f"\nncdu keeping its tree (browsing it): peak {browsing / 1024:.1f} MB")


if __name__ == "__main__":
    main()
