#!/usr/bin/env bash
# A sequential probability ratio test of NEW against BASE with fastchess, in
# UCI, from the book openings of bench/openings.epd (each played with both
# colours), as OpenBench runs one: pentanomial statistics, alpha = beta = 0.05.
#
# usage: bench/sprt.sh NEW BASE
# Environment (defaults in parentheses):
#   TC          time control, moves/seconds+increment (10+0.1)
#   ELO0, ELO1  the bounds of the test (0 and 5)
#   MODEL       normalized (nElo, OpenBench's and fastchess's default) or logistic Elo
#   GAMES       the most games before the test stops undecided (20000)
#   SPRT        0 for a plain match of GAMES games, with Elo and margin (1)
#   FASTCHESS   the fastchess binary (fastchess on the PATH)
#   CONCURRENCY games at once (the machine's cores); HASH table MB per engine (16)
#   SEED        order of the openings (the clock); MATCH_DIR where the PGN and log go (a new folder under /tmp)
# Prints fastchess's running and final results with the LLR, then the count of
# time losses, illegal moves and crashes. Exit 0 when the run had none, 1
# when it had any or fastchess failed, 2 on wrong usage, 77 without fastchess.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=SCRIPTDIR/fastchess_common.sh
. "$here/fastchess_common.sh"

if [ $# -ne 2 ] || [ ! -x "$1" ] || [ ! -x "$2" ]; then
  echo "usage: $0 NEW BASE   (two engine binaries)"
  exit 2
fi
ELO0=${ELO0:-0}
ELO1=${ELO1:-5}
MODEL=${MODEL:-normalized}
GAMES=${GAMES:-20000}
SPRT=${SPRT:-1}
require_fastchess
make_match_dir
new=$(readlink -f "$1")
base=$(readlink -f "$2")
log=$MATCH_DIR/sprt.log

sprt=(-sprt elo0="$ELO0" elo1="$ELO1" alpha=0.05 beta=0.05 model="$MODEL")
if [ "$SPRT" = 0 ]; then
  sprt=()
  echo "Match $new against $base: $TC, $GAMES games, $CONCURRENCY at once, seed $SEED"
else
  echo "SPRT $new against $base: $TC, [$ELO0, $ELO1] $MODEL, at most $GAMES games, $CONCURRENCY at once, seed $SEED"
fi
tolva_engine "$new" new
engines=("${tolva[@]}")
tolva_engine "$base" base
engines+=("${tolva[@]}")
match_options $(((GAMES + 1) / 2))
run_fastchess "$log" "${engines[@]}" -each tc="$TC" "${match[@]}" "${sprt[@]}" -pgnout file="$MATCH_DIR/games.pgn"

echo "Final result (games, PGN and log in $MATCH_DIR):"
last_results "$log"
grep -E 'H0 was accepted|H1 was accepted|SPRT' "$log" | tail -2 || true
abnormal_ends "$log"
