#!/usr/bin/env python3
"""Writes tests/data/perft960.epd: Chess960 positions with their perft counts
from a reference counter, Debian's stockfish (UCI_Chess960 on, `go perft N`).

    tools/perft960_reference.py [stockfish] > tests/data/perft960.epd

The positions: start positions by their Scharnagl number, the same back rank
for both sides; double-960 starts with a back rank of each side's own; and
positions a few random plies into a game from a 960 start, with castling
rights left and king or rooks on odd squares. Every line: the FEN with its
castling field in Shredder form (rook files, "HAha"), then ";Dn count" for
depths 1 to 6, or up to the first count above 200 million. Fixed seeds: the same file every run.
"""
import random
import subprocess
import sys

ENGINE = sys.argv[1] if len(sys.argv) > 1 else "/usr/games/stockfish"
DEPTHS = range(1, 7)


def back_rank(n):
    """The white back rank of start position n (0-959), Scharnagl's numbering."""
    row = [None] * 8
    n, light = divmod(n, 4)
    row[2 * light + 1] = "B"
    n, dark = divmod(n, 4)
    row[2 * dark] = "B"
    n, queen = divmod(n, 6)
    free = [i for i in range(8) if row[i] is None]
    row[free[queen]] = "Q"
    knights = [(0, 1), (0, 2), (0, 3), (0, 4), (1, 2), (1, 3), (1, 4), (2, 3), (2, 4), (3, 4)][n]
    free = [i for i in range(8) if row[i] is None]
    for k in knights:
        row[free[k]] = "N"
    for piece, i in zip("RKR", [i for i in range(8) if row[i] is None]):
        row[i] = piece
    return "".join(row)


def rights(rank, upper):
    """Shredder letters of the two rooks of a back rank, the king side first."""
    files = [i for i, p in enumerate(rank) if p == "R"]
    letters = "".join(chr(ord("A" if upper else "a") + f) for f in reversed(files))
    return letters


def start_fen(white, black):
    w, b = back_rank(white), back_rank(black)
    return f"{b.lower()}/pppppppp/8/8/8/8/PPPPPPPP/{w} w {rights(w, True)}{rights(b, False)} - 0 1"


class Engine:
    def __init__(self):
        self.p = subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.send("uci")
        self.until("uciok")
        self.send("setoption name UCI_Chess960 value true")
        self.send("setoption name Threads value 1")

    def send(self, line):
        self.p.stdin.write(line + "\n")
        self.p.stdin.flush()

    def until(self, prefix):
        lines = []
        while True:
            line = self.p.stdout.readline()
            if not line:
                raise RuntimeError("the reference engine ended")
            lines.append(line.rstrip("\n"))
            if line.startswith(prefix):
                return lines

    def perft(self, position, depth):
        self.send(f"position {position}")
        self.send(f"go perft {depth}")
        lines = self.until("Nodes searched")
        moves = [l.split(":")[0] for l in lines if ": " in l and not l.startswith("Nodes")]
        return int(lines[-1].split(":")[1]), moves

    def fen(self, position):
        self.send(f"position {position}")
        self.send("d")
        return [l for l in self.until("Checkers") if l.startswith("Fen: ")][0][5:]


def played_positions(engine, rng, count):
    """Positions a few random plies from 960 starts, castling rights left and
    the start's king and rooks on their odd squares."""
    found = []
    while len(found) < count:
        start = start_fen(rng.randrange(960), rng.randrange(960))
        moves = []
        for _ in range(rng.randrange(6, 24)):
            _, legal = engine.perft(f"fen {start} moves {' '.join(moves)}", 1)
            if not legal:
                break
            moves.append(rng.choice(legal))
        _, legal = engine.perft(f"fen {start} moves {' '.join(moves)}", 1)
        fen = engine.fen(f"fen {start} moves {' '.join(moves)}")
        if fen.split()[2] != "-" and legal:
            found.append(fen)
    return found


def main():
    rng = random.Random(960)
    engine = Engine()
    # Starts chosen for their castling geometry (king on b or g beside its
    # rook, rooks side by side, the standard array 518) and a few at random.
    singles = [0, 1, 2, 3, 5, 12, 95, 140, 191, 255, 310, 318, 382, 447, 518, 569, 636, 703, 767, 799, 831, 895,
               959]
    singles += rng.sample(range(960), 5)
    fens = [start_fen(n, n) for n in singles]
    fens += [start_fen(rng.randrange(960), rng.randrange(960)) for _ in range(12)]
    fens += played_positions(engine, rng, 14)
    for fen in fens:
        counts = []
        # Depths up to the first count beyond 200 million.
        for d in DEPTHS:
            counts.append(engine.perft(f"fen {fen}", d)[0])
            if counts[-1] > 200_000_000:
                break
        print(fen + "".join(f" ;D{d} {c}" for d, c in zip(DEPTHS, counts)), flush=True)
    engine.send("quit")


if __name__ == "__main__":
    main()
