#!/bin/sh
# Runs the 18 rows of Tolva's `selftest` through Tolva and, as a reference
# counter, through Debian's stockfish (`go perft N`), then prints both total
# times and their ratio. Tolva counts with its perft table, stockfish without
# one (its perft has none), so the figure compares the two as shipped.
#
# usage: bench/selftest_vs_stockfish.sh [path/to/tolva] [rounds]
set -eu

tolva=${1:-build/tolva}
rounds=${2:-3}
if [ ! -x "$tolva" ]; then
  echo "no tolva binary at $tolva" >&2
  exit 1
fi

stockfish=$(command -v stockfish || true)
[ -n "$stockfish" ] || [ ! -x /usr/games/stockfish ] || stockfish=/usr/games/stockfish
if [ -z "$stockfish" ]; then
  if [ "$(id -u)" = 0 ]; then
    apt-get install -y stockfish >/dev/null
  else
    sudo apt-get install -y stockfish >/dev/null
  fi
  stockfish=$(command -v stockfish || echo /usr/games/stockfish)
fi

A="rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
B="r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1"
C="8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67"
D="8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28"
E="rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3"
F="8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"

# Number, position, depth, expected leaves: the rows of the self-test.
rows="1 A 1 20
2 A 2 400
3 A 3 8902
4 A 4 197281
5 A 5 4865609
6 A 6 119060324
8 B 1 48
9 B 2 2039
10 B 3 97862
11 B 4 4085603
12 B 5 193690690
14 C 1 50
15 C 2 279
16 D 6 38633283
17 E 5 11139762
18 F 6 11030083
19 F 7 178633661
20 B 5 193690690"

now_ms() { date +%s%3N; }

# Runs a command with standard input from a file and its output to another;
# prints "wall-ms cpu-ms" (cpu = user + system, the same as wall where GNU time
# is missing). CPU time keeps the figures steady on a busy machine.
timed_run() {
  infile=$1 outfile=$2
  shift 2
  start=$(now_ms)
  if [ -x /usr/bin/time ]; then
    /usr/bin/time -f '%U %S' -o "$tmp/cpu" "$@" <"$infile" >"$outfile"
    wall=$(( $(now_ms) - start ))
    cpu=$(awk '{ printf "%d", ($1 + $2) * 1000 }' "$tmp/cpu")
  else
    "$@" <"$infile" >"$outfile"
    wall=$(( $(now_ms) - start ))
    cpu=$wall
  fi
  echo "$wall $cpu"
}

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

printf 'xboard\nselftest\nquit\n' >"$tmp/tolva.in"
sf_input=$(echo "$rows" | while read -r no pos depth expected; do
  eval fen=\$$pos
  echo "position fen $fen"
  echo "go perft $depth"
done)
(echo uci; echo "$sf_input"; echo isready; echo quit) >"$tmp/sf.in"

# Alternating rounds, medians at the end: the first start of a process that
# maps a few hundred MB can be slow on a virtual machine that hands its free
# memory back to the host, and a shared machine disturbs single runs.
: >"$tmp/tolva.times"
: >"$tmp/sf.times"
i=1
while [ "$i" -le "$rounds" ]; do
  # Tolva: the selftest command, timed from outside, and its own total line
  # ("t=" in centiseconds: the rows alone, without start-up and exit).
  set -- $(timed_run "$tmp/tolva.in" "$tmp/tolva.out" "$tolva")
  rows_ms=$(sed -n 's/^n=[0-9]*, t=\([0-9]*\),.*/\1/p' "$tmp/tolva.out" | awk '{ print $1 * 10 }')
  echo "$1 $2 $rows_ms" >>"$tmp/tolva.times"
  # Stockfish: one process, all rows in turn; each `go perft` ends with "Nodes searched".
  set -- $(timed_run "$tmp/sf.in" "$tmp/sf.out" "$stockfish")
  echo "$1 $2" >>"$tmp/sf.times"
  i=$((i + 1))
done
tolva_out=$(cat "$tmp/tolva.out")
echo "$tolva_out" | grep -E '^(# Self-test|[0-9]+ tests passed|n=)'
sf_out=$(cat "$tmp/sf.out")
median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : int((v[NR / 2] + v[NR / 2 + 1]) / 2) }'; }
tolva_wall=$(cut -d' ' -f1 "$tmp/tolva.times" | median)
tolva_cpu=$(cut -d' ' -f2 "$tmp/tolva.times" | median)
rows_ms=$(cut -d' ' -f3 "$tmp/tolva.times" | median)
sf_wall=$(cut -d' ' -f1 "$tmp/sf.times" | median)
sf_cpu=$(cut -d' ' -f2 "$tmp/sf.times" | median)

# Check stockfish's counts against the table, so that the timing is of the same work.
counts=$(echo "$sf_out" | sed -n 's/^Nodes searched: //p')
bad=0
if ! echo "$tolva_out" | grep -q '^18 tests passed, 0 tests failed'; then
  echo "tolva: not every self-test row passed" >&2
  bad=1
fi
i=1
for expected in $(echo "$rows" | awk '{print $4}'); do
  got=$(echo "$counts" | sed -n "${i}p")
  if [ "$got" != "$expected" ]; then
    echo "stockfish row $i: expected $expected, got $got" >&2
    bad=1
  fi
  i=$((i + 1))
done

echo "medians of $rounds rounds:"
echo "tolva selftest:  wall ${tolva_wall} ms, cpu ${tolva_cpu} ms; the rows alone ${rows_ms} ms"
echo "stockfish perft: wall ${sf_wall} ms, cpu ${sf_cpu} ms"
awk -v tw="$tolva_wall" -v sw="$sf_wall" -v tc="$tolva_cpu" -v sc="$sf_cpu" -v tr="$rows_ms" 'BEGIN {
  if (sw > 0 && sc > 0) printf "ratio tolva/stockfish: wall %.2f, cpu %.2f, the rows alone against wall %.2f\n", tw / sw, tc / sc, tr / sw
}'
exit $bad
