#!/usr/bin/env bash
# Plays a short match of whole games between Tolva and fairymax through a real
# xboard, run headless under xvfb-run, then checks the saved PGN and xboard's
# debug log: every game finished with a result, nobody claimed an illegal move,
# no engine crashed, and Tolva never lost on time or for any reason other than
# being mated or adjudicated. Tolva gets its options from xboard (-firstOptions)
# and answers each one, and with a book in its folder it opens every game from
# the book, without a search.
#
# Usage: xboard_match_test.sh <path to tolva> [games]
# Environment: TOLVA_HOST_TIMEOUT (seconds for the whole match, default 600),
#              TOLVA_HOST_KEEP=1 keeps the working directory even on success.
# Exit status: 0 pass, 1 fail, 77 skipped because xboard, xvfb-run (with
# xauth) or fairymax isn't installed.
set -u

tolva=${1:-}
games=${2:-2}
timeout_seconds=${TOLVA_HOST_TIMEOUT:-600}

# 40 moves in 30 seconds: fast, but with a session boundary in every game, and
# a string ("0:30") in the level command.
time_control=(-tc 0:30 -mps 40)
# Long games would only make the test slow; xboard calls them drawn here.
draw_after_moves=80

fail() {
  echo "FAIL: $*"
  failed=1
}

if [ -z "$tolva" ] || [ ! -x "$tolva" ]; then
  echo "FAIL: no engine binary given or not executable: '$tolva'"
  exit 1
fi
tolva=$(readlink -f "$tolva")
case "$games" in
  '' | *[!0-9]* | 0) echo "FAIL: the number of games must be at least 1: '$games'"; exit 1 ;;
esac

find_program() {
  local name=$1
  if command -v "$name" >/dev/null 2>&1; then
    command -v "$name"
  elif [ -x "/usr/games/$name" ]; then
    echo "/usr/games/$name"
  fi
}
xboard=$(find_program xboard)
fairymax=$(find_program fairymax)
xvfb_run=$(find_program xvfb-run)
xauth=$(find_program xauth)  # xvfb-run can't start a server without it
if [ -z "$xboard" ] || [ -z "$fairymax" ] || [ -z "$xvfb_run" ] || [ -z "$xauth" ]; then
  echo "SKIP: needs xboard, fairymax, xvfb-run and xauth (apt-get install -y xboard fairymax xvfb xauth)"
  exit 77
fi

book=$(dirname "$(readlink -f "$0")")/../data/performance.bin
if [ ! -s "$book" ]; then
  echo "FAIL: the test book is missing: $book"
  exit 1
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-host.XXXXXX")
mkdir -p "$work/tolva" "$work/fairymax"
# The default book name in Tolva's working folder.
cp "$book" "$work/tolva/book.bin"
# Sent by xboard as `option name=value` once Tolva has announced its options.
first_options=ttHashSizeMB=16,pawnHashSizeMB=4,gtbCacheSizeMB=8
pgn=$work/games.pgn
log=$work/xboard-debug.log
out=$work/xboard-output.txt

# Every process of the match inherits the marker TOLVA_HOST_RUN, so that
# whatever is left at the end, even if it left the process group, can be found
# and ended by id.
match_pid=""

own_processes() {
  local dir pid
  for dir in /proc/[0-9]*; do
    pid=${dir#/proc/}
    [ "$pid" = "$$" ] && continue
    if grep -qzxF "TOLVA_HOST_RUN=$work" "$dir/environ" 2>/dev/null; then
      echo "$pid"
    fi
  done
}

end_processes() {
  if [ -n "$match_pid" ]; then
    kill -TERM -- "-$match_pid" 2>/dev/null
  fi
  local pids
  for _ in 1 2 3 4 5 6 7 8 9 10; do
    pids=$(own_processes)
    [ -z "$pids" ] && return
    sleep 0.5
  done
  # shellcheck disable=SC2086
  kill -KILL $pids 2>/dev/null
  [ -n "$match_pid" ] && kill -KILL -- "-$match_pid" 2>/dev/null
}

failed=0
# shellcheck disable=SC2317  # called through the trap
cleanup() {
  end_processes
  if [ "$failed" = 0 ] && [ "${TOLVA_HOST_KEEP:-0}" != 1 ]; then
    rm -rf "$work"
  else
    echo "Files of this run kept in $work"
  fi
}
trap cleanup EXIT
trap 'failed=1; exit 1' INT TERM

echo "Match: $games games, Tolva ($tolva) against fairymax ($fairymax), ${time_control[*]}"

# HOME points into the working directory so that xboard reads and writes no
# settings of the user. A new session makes the whole tree one process group.
TOLVA_HOST_RUN=$work HOME=$work setsid "$xvfb_run" -a -s "-screen 0 1024x768x24" \
  "$xboard" -noGUI -xexit -saveSettingsOnExit false \
  -fcp "$tolva" -fd "$work/tolva" -fn Tolva -firstOptions "$first_options" \
  -scp "$fairymax" -sd "$work/fairymax" -sn Fairymax \
  -mg "$games" "${time_control[@]}" -xponder -smpCores 2 -autoCallFlag true \
  -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves "$draw_after_moves" -matchPause 1000 \
  -sgf "$pgn" -debug -nameOfDebugFile "$log" -soundProgram true \
  >"$out" 2>&1 </dev/null &
match_pid=$!

# Tolva lives through the whole match (xboard reuses it). xboard stays
# waiting when an engine dies, so watch for that instead of running into the
# timeout.
tolva_running() {
  local pid
  for pid in $(own_processes); do
    [ "$(readlink "/proc/$pid/exe" 2>/dev/null)" = "$tolva" ] && return 0
  done
  return 1
}

started=$SECONDS
tolva_seen=0
tolva_gone=0
while kill -0 "$match_pid" 2>/dev/null; do
  if ((SECONDS - started > timeout_seconds)); then
    fail "xboard did not finish the match within $timeout_seconds s"
    end_processes
    break
  fi
  if tolva_running; then
    tolva_seen=1
    tolva_gone=0
  elif [ "$tolva_seen" = 1 ]; then
    # After the last game xboard sends quit and ends soon after.
    tolva_gone=$((tolva_gone + 1))
    if [ "$tolva_gone" -gt 15 ]; then
      fail "Tolva's process ended while xboard still runs; its last lines:
$(grep -E '^[0-9]+ <first : ' "$log" 2>/dev/null | tail -n 15)"
      end_processes
      break
    fi
  fi
  sleep 1
done
wait "$match_pid" 2>/dev/null
status=$?
[ "$failed" = 0 ] && echo "xboard ended with status $status after $((SECONDS - started)) s"
end_processes
match_pid=""

if [ ! -s "$pgn" ]; then
  fail "xboard saved no game"
fi

# One record per game: tags, result token and the comment in front of it.
summary=$(awk '
  function flush() {
    if (seen) {
      text = body
      comment = ""
      token = ""
      if (match(text, /(1-0|0-1|1\/2-1\/2|\*)[ \t]*$/)) {
        token = substr(text, RSTART, RLENGTH)
        sub(/[ \t]+$/, "", token)
        text = substr(text, 1, RSTART - 1)
        sub(/[ \t]+$/, "", text)
        if (text ~ /\}$/) {
          start = 0
          for (i = length(text); i > 0; i--) if (substr(text, i, 1) == "{") { start = i; break }
          if (start) comment = substr(text, start + 1, length(text) - start - 1)
        }
      }
      moves = 0
      n = split(body, words, /[ \t]+/)
      for (i = 1; i <= n; i++) if (words[i] ~ /^[0-9]+\.$/) moves++
      printf "%s\t%s\t%s\t%s\t%s\t%d\n", white, black, result, token, comment, moves
    }
    seen = 0; body = ""; white = ""; black = ""; result = ""
  }
  /^\[Event / { flush(); seen = 1; next }
  /^\[White "/ { white = $0; sub(/^\[White "/, "", white); sub(/"\]$/, "", white); next }
  /^\[Black "/ { black = $0; sub(/^\[Black "/, "", black); sub(/"\]$/, "", black); next }
  /^\[Result "/ { result = $0; sub(/^\[Result "/, "", result); sub(/"\]$/, "", result); next }
  /^\[/ { next }
  { body = body " " $0 }
  END { flush() }
' "$pgn" 2>/dev/null)

played=0
tolva_white=0
tolva_black=0
while IFS=$'\t' read -r white black result token comment moves; do
  [ -z "$white$black" ] && continue
  played=$((played + 1))
  echo "Game $played: $white - $black $result {$comment} after $moves moves"
  case "$white" in Tolva*) tolva_white=$((tolva_white + 1)); tolva_side=White ;; *) tolva_side=Black ;; esac
  case "$black" in Tolva*) tolva_black=$((tolva_black + 1)) ;; esac
  case "$result" in
    1-0 | 0-1 | 1/2-1/2) ;;
    *) fail "game $played has no result (\"$result\")" ;;
  esac
  [ "$token" = "$result" ] || fail "game $played: result tag \"$result\" but the move text ends in \"$token\""
  lower=$(printf '%s' "$comment" | tr '[:upper:]' '[:lower:]')
  if [ "$tolva_side" = White ]; then won=1-0; lost=0-1; else won=0-1; lost=1-0; fi
  # One reason per game, the most telling first.
  case "$lower" in
    *illegal*) fail "game $played ended on an illegal move: {$comment}" ;;
    *crash* | *exit* | *disconnect* | *killed* | *error*)
      fail "game $played ended as an engine died: {$comment}" ;;
    *"on time"* | *forfeit* | *flag*)
      [ "$result" = "$won" ] || fail "game $played: Tolva ran out of time: $result {$comment}" ;;
    *mate* | *adjudicat*) ;;
    *) [ "$result" = "$lost" ] && fail "game $played: Tolva lost other than by being mated: $result {$comment}" ;;
  esac
  [ "$moves" -ge 1 ] || fail "game $played has no moves"
done <<<"$summary"

[ "$played" = "$games" ] || fail "$played of $games games were saved"
if [ "$games" -ge 2 ] && { [ "$tolva_white" = 0 ] || [ "$tolva_black" = 0 ]; }; then
  fail "Tolva did not play both colours (White $tolva_white, Black $tolva_black)"
fi

# The debug log holds the whole dialogue. Tolva is the first engine; an error
# line from it means it refused something xboard sent.
if [ -s "$log" ]; then
  problems=$(grep -n -i -E 'illegal|^[0-9]+ <first : Error' "$log" | head -20)
  [ -n "$problems" ] && fail "the debug log shows refused or illegal moves:
$problems"
  lines=$(grep -c -E '^[0-9]+ <first : move ' "$log")
  [ "$lines" -ge 1 ] || fail "Tolva sent no move in the debug log"

  # Each option of -firstOptions went out and came back as Tolva's setting
  # line, and the new sizes were applied at the next set-up.
  for option in ${first_options//,/ }; do
    grep -q -E "^[0-9]+ >first : option $option\$" "$log" || fail "xboard did not send \"option $option\""
    grep -q -E "^[0-9]+ <first : # setting option: $option\$" "$log" ||
      fail "Tolva did not answer \"option $option\""
  done
  grep -q -E '^[0-9]+ <first : # new size of TT hash: 16 MB$' "$log" || fail "the TT hash never took its new size"

  # Per game: thinking lines (they begin with the depth) between xboard's
  # `new` and Tolva's first move, and after it. A book move comes without any;
  # later moves must show some, or the first test would prove nothing. xboard
  # sends `new` more than once before a game: only a `new` followed by a move
  # starts one. As Black, Tolva may meet an opening move that its book
  # doesn't hold: only the games it opens must start from the book.
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
    [ "$before" = 0 ] || [ "$black" = 1 ] ||
      fail "game $game: Tolva searched for its first move instead of taking it from the book"
    [ "$after" -gt 0 ] || fail "game $game: no thinking lines after the first move"
  done <<<"$book_report"
  [ "$(grep -c . <<<"$book_report")" -ge "$games" ] || fail "fewer than $games games started in the debug log"
else
  fail "xboard wrote no debug log"
fi

if [ "$failed" != 0 ]; then
  echo "---- xboard output (last lines) ----"
  tail -n 20 "$out" 2>/dev/null
  echo "---- saved games ----"
  cat "$pgn" 2>/dev/null
  echo "---- debug log (last lines) ----"
  tail -n 40 "$log" 2>/dev/null
  exit 1
fi
echo "PASS: $played games finished, no illegal move, no crash, no loss on time; options answered, book openings"
exit 0
