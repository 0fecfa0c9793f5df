#!/usr/bin/env python3
"""The first UCI search right after `readyok` against the same search later.

A host sets a large table, waits for `readyok` and starts a timed search at
once. The engine answers `readyok` only once the table's pages are mapped, so
that this first search runs as fast as one started when the engine has long
been idle. Each run is a fresh engine: `setoption name Hash value 2048`,
`isready`, then after `readyok` either at once or after 6 s,
`position startpos moves e2e4 e7e5` and `go movetime 500`; the nodes of the
last info line are compared. Prints each run and the ratio of the medians
(at least 0.8 is the aim).

usage: bench/first_search_after_ready.py [path/to/tolva] [runs] [hash MB]
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time


def search_nodes(binary, hash_mb, delay):
    with tempfile.TemporaryDirectory() as empty:
        proc = subprocess.Popen([binary], cwd=empty, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

        def send(text):
            proc.stdin.write(text + "\n")
            proc.stdin.flush()

        def wait_for(prefix):
            for line in proc.stdout:
                if line.startswith(prefix):
                    return line
            raise RuntimeError("no " + prefix)

        send("uci")
        wait_for("uciok")
        send("setoption name Hash value %d" % hash_mb)
        ready_start = time.monotonic()
        send("isready")
        wait_for("readyok")
        ready_ms = (time.monotonic() - ready_start) * 1000
        time.sleep(delay)
        send("position startpos moves e2e4 e7e5")
        send("go movetime 500")
        nodes = 0
        for line in proc.stdout:
            words = line.split()
            if "nodes" in words:
                nodes = int(words[words.index("nodes") + 1])
            if line.startswith("bestmove"):
                break
        send("quit")
        proc.wait()
        return nodes, ready_ms


def main():
    binary = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/tolva")
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    hash_mb = int(sys.argv[3]) if len(sys.argv) > 3 else 2048
    first, later = [], []
    for run in range(runs):
        for delay, results in ((0, first), (6, later)):
            nodes, ready_ms = search_nodes(binary, hash_mb, delay)
            results.append(nodes)
            print("run %d, search %d s after readyok: %d nodes (readyok after %.0f ms)" % (run + 1, delay, nodes, ready_ms))
    ratio = statistics.median(first) / max(statistics.median(later), 1)
    print("first search / later search, medians: %d / %d nodes = %.2f" % (statistics.median(first),
                                                                          statistics.median(later), ratio))


if __name__ == "__main__":
    main()
