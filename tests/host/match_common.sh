# shellcheck shell=bash
# Sourced by the host match tests: the engine binary (the first argument),
# fail(), a working folder kept when a check failed, xboard run headless, and
# the checks of the games and the debug log that xboard saves.
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=../../tools/xboard_headless.sh
. "$here/../../tools/xboard_headless.sh"
failed=0
fail() { echo "FAIL: $*"; failed=1; }

tolva=${1:-}
[ -n "$tolva" ] && [ -x "$tolva" ] || { echo "FAIL: no engine binary given or not executable: '$tolva'"; exit 1; }
tolva=$(readlink -f "$tolva")

# Usage: make_work NAME; sets work, removed at the end unless a check failed or TOLVA_HOST_KEEP=1.
make_work() {
  work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-$1.XXXXXX")
  trap 'xboard_stop; if [ "$failed" = 0 ] && [ "${TOLVA_HOST_KEEP:-0}" != 1 ]; then rm -rf "$work"; else echo "Files kept in $work"; fi' EXIT
  trap 'failed=1; exit 1' INT TERM
}

# Waits for the match to end, at most $1 seconds; a command given as $2 runs
# every second and ends the wait when it fails.
wait_for_xboard() {
  local started=$SECONDS
  while kill -0 "$xboard_pid" 2>/dev/null; do
    if ((SECONDS - started > $1)); then fail "xboard did not finish the match within $1 s"; break; fi
    [ -n "${2:-}" ] && ! "$2" && break
    sleep 1
  done
  xboard_stop
}

# The games xboard saved in $1, $2 of them: each ended with a result, on no
# illegal move or dead engine, and Tolva lost on time or otherwise only by
# being mated or adjudicated. With two games or more Tolva played both colours.
check_games() {
  local pgn=$1 games=$2 played=0 tolva_white=0 tolva_black=0 white black result comment moves won lost
  [ -s "$pgn" ] || fail "xboard saved no game"
  # One record per game: White, Black, result tag, the comment in front of the result, moves.
  while IFS=$'\t' read -r white black result comment moves; do
    [ -z "$white$black" ] && continue
    played=$((played + 1))
    echo "Game $played: $white - $black $result {$comment} after $moves moves"
    case "$white" in Tolva*) tolva_white=$((tolva_white + 1)); won=1-0; lost=0-1 ;; *) won=0-1; lost=1-0 ;; esac
    case "$black" in Tolva*) tolva_black=$((tolva_black + 1)) ;; esac
    case "$result" in 1-0 | 0-1 | 1/2-1/2) ;; *) fail "game $played has no result (\"$result\")" ;; esac
    # One reason per game, the most telling first.
    case "$(printf '%s' "$comment" | tr '[:upper:]' '[:lower:]')" in
      *illegal*) fail "game $played ended on an illegal move: {$comment}" ;;
      *crash* | *exit* | *disconnect* | *killed* | *error*) fail "game $played ended as an engine died: {$comment}" ;;
      *"on time"* | *forfeit* | *flag*) [ "$result" = "$won" ] || fail "game $played: Tolva ran out of time: $result {$comment}" ;;
      *mate* | *adjudicat*) ;;
      *) [ "$result" = "$lost" ] && fail "game $played: Tolva lost other than by being mated: $result {$comment}" ;;
    esac
    [ "$moves" -ge 1 ] || fail "game $played has no moves"
  done < <(awk '
    function flush() {
      if (!seen) return
      moves = gsub(/ [0-9]+\./, "&", body); comment = ""
      if (match(body, /\{[^{}]*\}[ \t]*(1-0|0-1|1\/2-1\/2|\*)[ \t]*$/)) { comment = substr(body, RSTART + 1); sub(/\}[^}]*$/, "", comment) }
      printf "%s\t%s\t%s\t%s\t%d\n", tag["White"], tag["Black"], tag["Result"], comment, moves
    }
    /^\[Event / { flush(); seen = 1; body = ""; delete tag; next }
    /^\[(White|Black|Result) "/ { value = $0; sub(/^[^"]*"/, "", value); sub(/"\]$/, "", value); tag[substr($1, 2)] = value; next }
    /^\[/ { next }
    { body = body " " $0 }
    END { flush() }
  ' "$pgn" 2>/dev/null)
  [ "$played" = "$games" ] || fail "$played of $games games were saved"
  if [ "$games" -ge 2 ] && { [ "$tolva_white" = 0 ] || [ "$tolva_black" = 0 ]; }; then
    fail "Tolva did not play both colours (White $tolva_white, Black $tolva_black)"
  fi
}

# xboard's debug log $1, where Tolva is the first engine: it moved, and no
# line shows an illegal move or an error of Tolva's (a command it refused).
# Fails when there is no log.
check_log() {
  [ -s "$1" ] || { fail "xboard wrote no debug log"; return 1; }
  local problems
  problems=$(grep -n -i -E 'illegal|^[0-9]+ <first : Error' "$1" | head -20)
  [ -n "$problems" ] && fail "the debug log shows refused or illegal moves:
$problems"
  grep -q -E '^[0-9]+ <first : move ' "$1" || fail "Tolva sent no move in the debug log"
}

# Ends the test: PASS and $1, or on failure the end of each file named after it.
finish() {
  if [ "$failed" = 0 ]; then echo "PASS: $1"; exit 0; fi
  for file in "${@:2}"; do echo "---- $file ----"; tail -n 40 "$file" 2>/dev/null; done
  exit 1
}
