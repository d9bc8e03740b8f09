#!/usr/bin/env python3
"""Where a program's idle memory lies: resident KiB per mapped file (libraries, fonts, caches) and per
kind of anonymous memory, read from /proc/<pid>/smaps --settle seconds after its first frame.

Usage (under a display, e.g. xvfb-run -a):
  rss_breakdown.py --probe libbrivanta_first_frame_probe.so [--env NAME=VALUE ...] program
Prints `kib  where` lines, largest first, then the total; the first-frame probe marks when to look.
"""

import argparse
import collections
import os
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import startup_bench  # noqa: E402


def rss_by_mapping(pid):
    totals = collections.Counter()
    where = None
    with open(f"/proc/{pid}/smaps") as smaps:
        for line in smaps:
            fields = line.split()
            if "-" in fields[0] and len(fields) >= 5 and ":" in fields[3]:
                name = " ".join(fields[5:]) if len(fields) > 5 else "[anonymous]"
                where = name
            elif fields[0] == "Rss:":
                totals[where] += int(fields[1])
    return totals


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--probe", required=True)
    parser.add_argument("--env", action="append", default=[], help="NAME=VALUE for the program")
    parser.add_argument("--settle", type=float, default=1.0)
    parser.add_argument("--top", type=int, default=40)
    args = parser.parse_args()
    extra_env = dict(item.split("=", 1) for item in args.env)

    captured = collections.Counter()
    original_sleep = time.sleep

    # Read the map when run_once reads the idle RSS: right after its settle sleep, the process still up.
    def sleep_then_capture(seconds):
        original_sleep(seconds)
        captured.update(rss_by_mapping(launched["pid"]))

    launched = {}
    original_popen = startup_bench.subprocess.Popen

    def popen(*popen_args, **popen_kwargs):
        process = original_popen(*popen_args, **popen_kwargs)
        launched["pid"] = process.pid
        return process

    startup_bench.subprocess.Popen = popen
    startup_bench.time.sleep = sleep_then_capture
    try:
        sample = startup_bench.run_once(os.path.abspath(args.program), os.path.abspath(args.probe), args.settle,
            30.0, None, extra_env)
    finally:
        startup_bench.subprocess.Popen = original_popen
        startup_bench.time.sleep = original_sleep

    for where, kib in captured.most_common(args.top):
        print(f"{kib:8d}  {where}")
    print(f"{sum(captured.values()):8d}  total (VmRSS {sample['rss_idle_kib']}, drawn with {sample['api']})")
    return 0


if __name__ == "__main__":
    sys.exit(main())
