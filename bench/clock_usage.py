#!/usr/bin/env python3
"""How much of its clock each engine used in a fastchess PGN (the time of each
move is in its comment, "{score/depth 0.123s}"): per engine, the share of
base + increments used at the end of the games, and the clock left after
20, 40 and 60 of its moves, averaged over the games that got that far.

usage: bench/clock_usage.py GAMES.pgn
"""
import re
import sys
from collections import defaultdict


def games(text):
    for block in re.split(r"\n(?=\[Event )", text):
        tags = dict(re.findall(r'^\[(\w+) "(.*)"\]$', block, re.M))
        moves = block[block.rfind("]") + 1:]
        times = [float(t) for t in re.findall(r"\{[^}]*?(\d+\.\d+)s\}", moves)]
        if "TimeControl" in tags and times:
            yield tags, times


def main(path):
    used_share = defaultdict(list)
    left_at = defaultdict(lambda: defaultdict(list))
    for tags, times in games(open(path).read()):
        base, _, inc = tags["TimeControl"].partition("+")
        base, inc = float(base), float(inc or 0)
        black_first = " b " in tags.get("FEN", " w ")
        for side, name in ((0, tags["White"]), (1, tags["Black"])):
            # The moves of this side: with Black first, Black's are the even ones.
            own = times[(side ^ black_first)::2]
            clock = base
            for n, t in enumerate(own, 1):
                clock += inc - t
                if n in (20, 40, 60):
                    left_at[name][n].append(clock / base)
            if own:
                used_share[name].append((base + inc * len(own) - clock) / (base + inc * len(own)))
    for name in sorted(used_share):
        shares = used_share[name]
        line = f"{name}: {len(shares)} games, used {100 * sum(shares) / len(shares):.0f}% of base + increments"
        for n in (20, 40, 60):
            left = left_at[name][n]
            if left:
                line += f"; after move {n} {100 * sum(left) / len(left):.0f}% of base left ({len(left)} games)"
        print(line)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
