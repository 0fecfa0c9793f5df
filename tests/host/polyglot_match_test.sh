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
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=../../tools/xboard_headless.sh
. "$here/../../tools/xboard_headless.sh"

tolva=${1:-}
games=${2:-2}
shift 2 2>/dev/null
# Ten seconds and a tenth of a second per move: the increment only counts
# when UCI's milliseconds reach the engine.
time_control=("$@")
[ ${#time_control[@]} = 0 ] && time_control=(-tc 0:10 -inc 0.1)
timeout_seconds=${TOLVA_HOST_TIMEOUT:-600}
ponder=${TOLVA_HOST_PONDER:-0}
ponder_flag=-xponder
[ "$ponder" = 1 ] && ponder_flag=-ponder
failed=0
fail() {
  echo "FAIL: $*"
  failed=1
}

if [ -z "$tolva" ] || [ ! -x "$tolva" ]; then
  echo "FAIL: no engine binary given or not executable: '$tolva'"
  exit 1
fi
tolva=$(readlink -f "$tolva")

xboard_require fairymax polyglot
fairymax=$(find_program fairymax)
polyglot=$(find_program polyglot)

work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-polyglot.XXXXXX")
mkdir -p "$work/tolva" "$work/fairymax"
pgn=$work/games.pgn
log=$work/xboard-debug.log
polyglot_log=$work/polyglot.log
# shellcheck disable=SC2317  # called through the trap
cleanup() {
  xboard_stop
  if [ "$failed" = 0 ] && [ "${TOLVA_HOST_KEEP:-0}" != 1 ]; then rm -rf "$work"; else echo "Files kept in $work"; fi
}
trap cleanup EXIT
trap 'failed=1; exit 1' INT TERM

echo "Match: $games games, Tolva (UCI through $polyglot) against fairymax, ${time_control[*]} $ponder_flag"
# -fUCI makes xboard start Tolva through polyglot.
xboard_start "$work" -fcp "$tolva" -fd "$work/tolva" -fn Tolva -fUCI \
  -adapterCommand "$polyglot -noini -log true -lf \"$polyglot_log\" -ec \"%fcp\" -ed \"%fd\"" -firstOptions "PawnHash=4" \
  -scp "$fairymax" -sd "$work/fairymax" -sn Fairymax \
  -mg "$games" "${time_control[@]}" "$ponder_flag" -autoCallFlag true \
  -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves 80 -matchPause 1000 \
  -sgf "$pgn" -debug -nameOfDebugFile "$log" -soundProgram true
started=$SECONDS
while kill -0 "$xboard_pid" 2>/dev/null; do
  if ((SECONDS - started > timeout_seconds)); then
    fail "xboard did not finish the match within $timeout_seconds s"
    break
  fi
  sleep 1
done
xboard_stop

# The saved games: each has a result, and none ended on an illegal move, a
# dead engine or a flag (at this control neither engine should lose on time).
played=$(grep -c '^\[Result "' "$pgn" 2>/dev/null)
[ "$played" = "$games" ] || fail "${played:-0} of $games games were saved"
grep -q '^\[Result "\*"\]' "$pgn" && fail "a game has no result"
endings=$(grep -o -i -E '\{[^}]*(illegal|crash|exit|disconnect|killed|error|on time|forfeit)[^}]*\}' "$pgn")
[ -n "$endings" ] && fail "games ended badly: $endings"

# xboard's log holds polyglot's side of the dialogue: moves, thinking lines
# translated from Tolva's `info`, and any refusal.
if [ -s "$log" ]; then
  problems=$(grep -n -i -E 'illegal|<first : Error' "$log" | head -20)
  [ -n "$problems" ] && fail "the debug log shows refused or illegal moves:
$problems"
  [ "$(grep -c -E '^[0-9]+ <first : move ' "$log")" -ge 1 ] || fail "Tolva sent no move through polyglot"
  grep -q -E '^[0-9]+ <first : [0-9]+ [-+]?[0-9]+ [0-9]+ [0-9]+ ' "$log" || fail "no thinking lines came through polyglot"
  grep -q -E '^[0-9]+ >first : option PawnHash=4$' "$log" || fail "the option PawnHash never went out to polyglot"
else
  fail "xboard wrote no debug log"
fi

# Pondering: Tolva offers it, polyglot asks for it, and the predicted moves
# both hit and miss over a few games.
if [ "$ponder" = 1 ]; then
  if [ -s "$polyglot_log" ]; then
    grep -q 'option name Ponder type check' "$polyglot_log" || fail "Tolva did not list the Ponder option"
    grep -q -E 'Adapter->Engine: go .*ponder' "$polyglot_log" || fail "polyglot never sent go ponder"
    grep -q -E 'Adapter->Engine: (ponderhit|stop)$' "$polyglot_log" || fail "no ponder search was ended by ponderhit or stop"
  else
    fail "polyglot wrote no log"
  fi
fi

if [ "$failed" != 0 ]; then
  echo "---- saved games ----"; cat "$pgn" 2>/dev/null
  echo "---- debug log (last lines) ----"; tail -n 40 "$log" 2>/dev/null
  exit 1
fi
echo "PASS: $played games finished through polyglot, no illegal move, no crash, no loss on time"
exit 0
