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
# shellcheck source=match_common.sh
. "$(dirname "$(readlink -f "$0")")/match_common.sh"
games=${2:-2}
case "$games" in '' | *[!0-9]* | 0) echo "FAIL: the number of games must be at least 1: '$games'"; exit 1 ;; esac
xboard_require fairymax
fairymax=$(find_program fairymax)
book=$here/../data/performance.bin
[ -s "$book" ] || { echo "FAIL: the test book is missing: $book"; exit 1; }

make_work host
mkdir -p "$work/tolva" "$work/fairymax"
cp "$book" "$work/tolva/book.bin"  # the default book name in Tolva's working folder
# Sent by xboard as `option name=value` once Tolva has announced its options.
first_options=ttHashSizeMB=16,pawnHashSizeMB=4,gtbCacheSizeMB=8
pgn=$work/games.pgn
log=$work/xboard-debug.log

# 40 moves in 30 seconds: fast, but with a session boundary in every game and
# a string ("0:30") in the level command. Long games are called drawn.
echo "Match: $games games, Tolva ($tolva) against fairymax ($fairymax)"
xboard_start "$work" -fcp "$tolva" -fd "$work/tolva" -fn Tolva -firstOptions "$first_options" \
  -scp "$fairymax" -sd "$work/fairymax" -sn Fairymax -mg "$games" -tc 0:30 -mps 40 -xponder -smpCores 2 \
  -autoCallFlag true -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves 80 -matchPause 1000 -sgf "$pgn" -debug -nameOfDebugFile "$log" -soundProgram true

# Tolva lives through the whole match (xboard reuses it), and xboard stays
# waiting when an engine dies: watch for that instead of running into the timeout.
tolva_seen=0 tolva_gone=0
# shellcheck disable=SC2317  # called by wait_for_xboard
tolva_alive() {
  tolva_gone=$((tolva_gone + 1))
  for pid in $(xboard_processes); do
    [ "$(readlink "/proc/$pid/exe" 2>/dev/null)" = "$tolva" ] && tolva_seen=1 && tolva_gone=0
  done
  # After the last game xboard sends quit and ends soon after.
  [ "$tolva_seen" = 0 ] || [ "$tolva_gone" -le 15 ] && return 0
  fail "Tolva's process ended while xboard still runs; its last lines:
$(grep -E '^[0-9]+ <first : ' "$log" 2>/dev/null | tail -n 15)"
  return 1
}
wait_for_xboard "${TOLVA_HOST_TIMEOUT:-600}" tolva_alive
check_games "$pgn" "$games"

if check_log "$log"; then
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
fi
finish "$games games finished, no illegal move, no crash, no loss on time; options answered, book openings" \
  "$work/xboard-output.txt" "$pgn" "$log"
