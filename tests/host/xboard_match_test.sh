#!/usr/bin/env bash
# Plays a short match of whole games between Tolva and fairymax through a real
# xboard, headless, then checks the saved PGN and xboard's debug log: every
# game finished with a result, nobody claimed an illegal move, no engine
# crashed, and Tolva never lost on time or for any reason other than being
# mated or adjudicated. Tolva gets its options from xboard (-firstOptions) and
# answers each one, and with a book in its folder it opens from the book,
# without a search.
#
# Usage: xboard_match_test.sh <path to tolva> [games]
# Environment: TOLVA_HOST_TIMEOUT (seconds for the whole match, default 600),
#              TOLVA_HOST_KEEP=1 keeps the working directory even on success.
# Exit status: 0 pass, 1 fail, 77 skipped because xboard, xvfb-run, xauth or
# fairymax isn't installed.
set -u
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=../../tools/xboard_headless.sh
. "$here/../../tools/xboard_headless.sh"

tolva=${1:-}
games=${2:-2}
timeout_seconds=${TOLVA_HOST_TIMEOUT:-600}
failed=0
fail() { echo "FAIL: $*"; failed=1; }

[ -n "$tolva" ] && [ -x "$tolva" ] || { echo "FAIL: no engine binary given or not executable: '$tolva'"; exit 1; }
tolva=$(readlink -f "$tolva")
case "$games" in '' | *[!0-9]* | 0) echo "FAIL: the number of games must be at least 1: '$games'"; exit 1 ;; esac
xboard_require fairymax
fairymax=$(find_program fairymax)
book=$here/../data/performance.bin
[ -s "$book" ] || { echo "FAIL: the test book is missing: $book"; exit 1; }

work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-host.XXXXXX")
mkdir -p "$work/tolva" "$work/fairymax"
cp "$book" "$work/tolva/book.bin"  # the default book name in Tolva's working folder
# Sent by xboard as `option name=value` once Tolva has announced its options.
first_options=ttHashSizeMB=16,pawnHashSizeMB=4,gtbCacheSizeMB=8
pgn=$work/games.pgn
log=$work/xboard-debug.log
# shellcheck disable=SC2317  # called through the trap
cleanup() { xboard_stop; if [ "$failed" = 0 ] && [ "${TOLVA_HOST_KEEP:-0}" != 1 ]; then rm -rf "$work"; else echo "Files kept in $work"; fi; }
trap cleanup EXIT
trap 'failed=1; exit 1' INT TERM

# 40 moves in 30 seconds: fast, but with a session boundary in every game and
# a string ("0:30") in the level command. Long games are called drawn.
echo "Match: $games games, Tolva ($tolva) against fairymax ($fairymax)"
xboard_start "$work" -fcp "$tolva" -fd "$work/tolva" -fn Tolva -firstOptions "$first_options" \
  -scp "$fairymax" -sd "$work/fairymax" -sn Fairymax -mg "$games" -tc 0:30 -mps 40 -xponder -smpCores 2 \
  -autoCallFlag true -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves 80 -matchPause 1000 -sgf "$pgn" -debug -nameOfDebugFile "$log" -soundProgram true

# Tolva lives through the whole match (xboard reuses it), and xboard stays
# waiting when an engine dies: watch for that instead of running into the timeout.
started=$SECONDS tolva_seen=0 tolva_gone=0
while kill -0 "$xboard_pid" 2>/dev/null; do
  if ((SECONDS - started > timeout_seconds)); then
    fail "xboard did not finish the match within $timeout_seconds s"
    break
  fi
  tolva_gone=$((tolva_gone + 1))
  for pid in $(xboard_processes); do
    [ "$(readlink "/proc/$pid/exe" 2>/dev/null)" = "$tolva" ] && tolva_seen=1 && tolva_gone=0
  done
  # After the last game xboard sends quit and ends soon after.
  if [ "$tolva_seen" = 1 ] && [ "$tolva_gone" -gt 15 ]; then
    fail "Tolva's process ended while xboard still runs; its last lines:
$(grep -E '^[0-9]+ <first : ' "$log" 2>/dev/null | tail -n 15)"
    break
  fi
  sleep 1
done
xboard_stop
[ -s "$pgn" ] || fail "xboard saved no game"

# One record per game: White, Black, result tag, result token, the comment in front of it, moves.
summary=$(awk '
  function flush() {
    if (!seen) return
    token = ""; comment = ""; text = body; moves = gsub(/ [0-9]+\./, "&", body)
    if (match(text, /(1-0|0-1|1\/2-1\/2|\*)[ \t]*$/)) {
      token = substr(text, RSTART, RLENGTH); sub(/[ \t]+$/, "", token); text = substr(text, 1, RSTART - 1)
      if (match(text, /\{[^{}]*\}[ \t]*$/)) { comment = substr(text, RSTART + 1); sub(/\}[ \t]*$/, "", comment) }
    }
    printf "%s\t%s\t%s\t%s\t%s\t%d\n", tag["White"], tag["Black"], tag["Result"], token, comment, moves
  }
  /^\[Event / { flush(); seen = 1; body = ""; delete tag; next }
  /^\[(White|Black|Result) "/ { value = $0; sub(/^[^"]*"/, "", value); sub(/"\]$/, "", value); tag[substr($1, 2)] = value; next }
  /^\[/ { next }
  { body = body " " $0 }
  END { flush() }
' "$pgn" 2>/dev/null)

played=0 tolva_white=0 tolva_black=0
while IFS=$'\t' read -r white black result token comment moves; do
  [ -z "$white$black" ] && continue
  played=$((played + 1))
  echo "Game $played: $white - $black $result {$comment} after $moves moves"
  case "$white" in Tolva*) tolva_white=$((tolva_white + 1)); won=1-0; lost=0-1 ;; *) won=0-1; lost=1-0 ;; esac
  case "$black" in Tolva*) tolva_black=$((tolva_black + 1)) ;; esac
  case "$result" in 1-0 | 0-1 | 1/2-1/2) ;; *) fail "game $played has no result (\"$result\")" ;; esac
  [ "$token" = "$result" ] || fail "game $played: result tag \"$result\" but the move text ends in \"$token\""
  # One reason per game, the most telling first.
  case "$(printf '%s' "$comment" | tr '[:upper:]' '[:lower:]')" in
    *illegal*) fail "game $played ended on an illegal move: {$comment}" ;;
    *crash* | *exit* | *disconnect* | *killed* | *error*) fail "game $played ended as an engine died: {$comment}" ;;
    *"on time"* | *forfeit* | *flag*) [ "$result" = "$won" ] || fail "game $played: Tolva ran out of time: $result {$comment}" ;;
    *mate* | *adjudicat*) ;;
    *) [ "$result" = "$lost" ] && fail "game $played: Tolva lost other than by being mated: $result {$comment}" ;;
  esac
  [ "$moves" -ge 1 ] || fail "game $played has no moves"
done <<<"$summary"
[ "$played" = "$games" ] || fail "$played of $games games were saved"
if [ "$games" -ge 2 ] && { [ "$tolva_white" = 0 ] || [ "$tolva_black" = 0 ]; }; then
  fail "Tolva did not play both colours (White $tolva_white, Black $tolva_black)"
fi

# The debug log holds the whole dialogue; Tolva is the first engine. An error
# line from it means it refused something xboard sent.
if [ -s "$log" ]; then
  problems=$(grep -n -i -E 'illegal|^[0-9]+ <first : Error' "$log" | head -20)
  [ -n "$problems" ] && fail "the debug log shows refused or illegal moves:
$problems"
  grep -q -E '^[0-9]+ <first : move ' "$log" || fail "Tolva sent no move in the debug log"
  # Each option went out and came back as Tolva's setting line; the new sizes were applied.
  for option in ${first_options//,/ }; do
    grep -q -E "^[0-9]+ >first : option $option\$" "$log" || fail "xboard did not send \"option $option\""
    grep -q -E "^[0-9]+ <first : # setting option: $option\$" "$log" || fail "Tolva did not answer \"option $option\""
  done
  grep -q -E '^[0-9]+ <first : # new size of TT hash: 16 MB$' "$log" || fail "the TT hash never took its new size"

  # Per game: thinking lines (they begin with the depth) between xboard's `new`
  # and Tolva's first move, and after it. A book move comes without any; later
  # moves must show some. Only a `new` followed by a move starts a game. As
  # Black, Tolva may meet an opening move its book lacks: only the games it
  # opens must start from the book.
  book_report=$(awk '
    function report() { if (moved) print ++game, before, after, black }
    / >first : new$/ { report(); started = 1; before = 0; after = 0; moved = 0; black = 0; next }
    !started { next }
    / >first : usermove / { if (!moved) black = 1; next }
    / <first : [0-9]/ { if (moved) after++; else before++; next }
    / <first : move / { moved = 1 }
    END { report() }
  ' "$log")
  while read -r game before after black; do
    [ -z "$game" ] && continue
    echo "Game $game: Tolva thought $before lines before its first move, $after after it"
    [ "$before" = 0 ] || [ "$black" = 1 ] || fail "game $game: Tolva searched for its first move instead of taking it from the book"
    [ "$after" -gt 0 ] || fail "game $game: no thinking lines after the first move"
  done <<<"$book_report"
  [ "$(grep -c . <<<"$book_report")" -ge "$games" ] || fail "fewer than $games games started in the debug log"
else
  fail "xboard wrote no debug log"
fi

if [ "$failed" != 0 ]; then
  { echo "---- xboard output ----"; tail -n 20 "$work/xboard-output.txt"; echo "---- games ----"; cat "$pgn"
    echo "---- debug log ----"; tail -n 40 "$log"; } 2>/dev/null
  exit 1
fi
echo "PASS: $played games finished, no illegal move, no crash, no loss on time; options answered, book openings"
