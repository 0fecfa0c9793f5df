#!/usr/bin/env python3
"""Start-up time and resident memory of Tolva at its default settings.

Starts the engine in an empty folder (no tolva.ini), sends `xboard` and
`protover 2`, and times the wait for the feature line that ends with done=1,
the reply a host waits for. Then reads the resident set (VmRSS) and its peak
(VmHWM) from /proc, once the set has stopped growing, and quits. Several runs; prints each and the median.

usage: bench/startup_memory.py [path/to/tolva] [runs]
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time


def one_run(binary):
    with tempfile.TemporaryDirectory() as empty:
        start = time.monotonic()
        proc = subprocess.Popen([binary], cwd=empty, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        proc.stdin.write("xboard\nprotover 2\n")
        proc.stdin.flush()
        for line in proc.stdout:
            if line.startswith("feature") and "done=1" in line:
                break
        seconds = time.monotonic() - start
        # The tables' pages are mapped by a helper thread after the reply:
        # the resident set is read once it has stopped growing.
        status, last = {}, -1
        for _ in range(100):
            with open(f"/proc/{proc.pid}/status") as f:
                for row in f:
                    key, _, value = row.partition(":")
                    status[key] = value.strip()
            if status["VmRSS"] == last:
                break
            last = status["VmRSS"]
            time.sleep(0.1)
        proc.stdin.write("quit\n")
        proc.stdin.flush()
        proc.communicate()
        kb = lambda key: int(status[key].split()[0])
        return seconds, kb("VmRSS"), kb("VmHWM")


def main():
    binary = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/tolva")
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    results = [one_run(binary) for _ in range(runs)]
    for seconds, rss, peak in results:
        print(f"protover 2 answered after {seconds * 1000:.0f} ms; resident {rss / 1024:.0f} MB, peak {peak / 1024:.0f} MB")
    print(f"median of {runs}: {statistics.median(r[0] for r in results) * 1000:.0f} ms, "
          f"resident {statistics.median(r[1] for r in results) / 1024:.0f} MB")


if __name__ == "__main__":
    main()
