#!/usr/bin/env bash
# Plays a short match between Tolva speaking UCI and fairymax through a real
# UCI host: Debian's polyglot adapter under xboard, headless under xvfb-run.
# Checks the saved games: every game finished with a result, no illegal move,
# no engine died, and Tolva never lost on time or other than by being mated
# or adjudicated; and the dialogue shows Tolva answered `uci` and searched.
#
# Usage: polyglot_match_test.sh <path to tolva> [games] [xboard time control words...]
# Environment: TOLVA_HOST_TIMEOUT (seconds for the whole match, default 600),
#              TOLVA_HOST_KEEP=1 keeps the working directory,
#              TOLVA_HOST_PONDER=1 lets xboard ponder (-ponder): polyglot then
#              sends `go ... ponder`, `ponderhit` and `stop`, as its log must show.
# Exit status: 0 pass, 1 fail, 77 skipped when polyglot, xboard, xvfb-run,
# xauth or fairymax is missing.
set -u
# shellcheck source=match_common.sh
. "$(dirname "$(readlink -f "$0")")/match_common.sh"
games=${2:-2}
shift 2 2>/dev/null
# Ten seconds and a tenth of a second per move: the increment only counts
# when UCI's milliseconds reach the engine.
time_control=("$@")
[ ${#time_control[@]} = 0 ] && time_control=(-tc 0:10 -inc 0.1)
ponder=${TOLVA_HOST_PONDER:-0}
ponder_flag=-xponder
[ "$ponder" = 1 ] && ponder_flag=-ponder
xboard_require fairymax polyglot
fairymax=$(find_program fairymax)
polyglot=$(find_program polyglot)

make_work polyglot
mkdir -p "$work/tolva" "$work/fairymax"
pgn=$work/games.pgn
log=$work/xboard-debug.log
polyglot_log=$work/polyglot.log

echo "Match: $games games, Tolva (UCI through $polyglot) against fairymax, ${time_control[*]} $ponder_flag"
# -fUCI makes xboard start Tolva through polyglot.
xboard_start "$work" -fcp "$tolva" -fd "$work/tolva" -fn Tolva -fUCI \
  -adapterCommand "$polyglot -noini -log true -lf \"$polyglot_log\" -ec \"%fcp\" -ed \"%fd\"" -firstOptions "PawnHash=4" \
  -scp "$fairymax" -sd "$work/fairymax" -sn Fairymax \
  -mg "$games" "${time_control[@]}" "$ponder_flag" -autoCallFlag true \
  -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves 80 -matchPause 1000 \
  -sgf "$pgn" -debug -nameOfDebugFile "$log" -soundProgram true
wait_for_xboard "${TOLVA_HOST_TIMEOUT:-600}"
check_games "$pgn" "$games"

# xboard's log holds polyglot's side of the dialogue: moves, thinking lines
# translated from Tolva's `info`, and any refusal.
if check_log "$log"; then
  grep -q -E '^[0-9]+ <first : [0-9]+ [-+]?[0-9]+ [0-9]+ [0-9]+ ' "$log" || fail "no thinking lines came through polyglot"
  grep -q -E '^[0-9]+ >first : option PawnHash=4$' "$log" || fail "the option PawnHash never went out to polyglot"
fi

# Pondering: Tolva offers it, polyglot asks for it, and the predicted moves
# both hit and miss over a few games.
if [ "$ponder" = 1 ] && [ ! -s "$polyglot_log" ]; then
  fail "polyglot wrote no log"
elif [ "$ponder" = 1 ]; then
  grep -q 'option name Ponder type check' "$polyglot_log" || fail "Tolva did not list the Ponder option"
  grep -q -E 'Adapter->Engine: go .*ponder' "$polyglot_log" || fail "polyglot never sent go ponder"
  grep -q -E 'Adapter->Engine: (ponderhit|stop)$' "$polyglot_log" || fail "no ponder search was ended by ponderhit or stop"
fi
finish "$games games finished through polyglot, no illegal move, no crash, no loss on time" "$pgn" "$log"
