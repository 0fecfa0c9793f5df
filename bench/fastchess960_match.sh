#!/usr/bin/env bash
# Plays a short Chess960 match through fastchess (-variant fischerandom), which
# sets UCI_Chess960 and checks every move itself: Tolva against Debian's
# stockfish (Tolva itself when stockfish is missing), from the 960 start
# positions of tests/data/perft960.epd, both kinds (the same back rank for
# both sides and a back rank each). Every game must end with a result, no
# illegal move, no dead or stalled engine, no loss on time.
#
# fastchess isn't a Debian package, so CI can't run this: it is a match to
# run by hand after a change to castling or to the UCI front end.
#
# Usage: bench/fastchess960_match.sh <path to tolva> [games] [time control, default 2+0.05]
# Environment: FASTCHESS (the program, default fastchess on the PATH or in
#              /usr/local/bin), TOLVA_HOST_KEEP=1 keeps the working directory.
# Exit status: 0 pass, 1 fail, 77 when fastchess is missing.
set -u
here=$(dirname "$(readlink -f "$0")")
failed=0
fail() { echo "FAIL: $*"; failed=1; }
tolva=${1:-}
[ -n "$tolva" ] && [ -x "$tolva" ] || { echo "FAIL: no engine binary given or not executable: '$tolva'"; exit 1; }
tolva=$(readlink -f "$tolva")
make_work() {
  work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-$1.XXXXXX")
  trap 'if [ "$failed" = 0 ] && [ "${TOLVA_HOST_KEEP:-0}" != 1 ]; then rm -rf "$work"; else echo "Files kept in $work"; fi' EXIT
}
finish() {
  if [ "$failed" = 0 ]; then echo "PASS: $1"; exit 0; fi
  for file in "${@:2}"; do echo "---- $file ----"; tail -n 40 "$file" 2>/dev/null; done
  exit 1
}
games=${2:-4}
tc=${3:-2+0.05}
fastchess=${FASTCHESS:-$(command -v fastchess || echo /usr/local/bin/fastchess)}
if [ ! -x "$fastchess" ]; then
  echo "SKIP: needs fastchess (../shared/tools/build-fastchess.sh, or FASTCHESS=path)"
  exit 77
fi
opponent=$(command -v stockfish || echo /usr/games/stockfish)
opponent_name=stockfish
[ -x "$opponent" ] || opponent=$tolva opponent_name=tolva-2
make_work fastchess960

# The start positions of the suite, as plain EPD, alternating between the
# two kinds: the same back rank for both sides, and a back rank each.
grep -E '^[rnbqk]{8}/pppppppp/8/8/8/8/PPPPPPPP/' "$here/../tests/data/perft960.epd" | cut -d';' -f1 |
  awk '{ split($1, r, "/"); kind = tolower(r[8]) == r[1] ? "same" : "own"; line[kind, ++n[kind]] = $1 " " $2 " " $3 " " $4 }
       END { for (i = 1; i <= n["same"] || i <= n["own"]; ++i) for (k = 0; k < 2; ++k) {
               kind = k ? "own" : "same"; if (i <= n[kind]) print line[kind, i] } }' >"$work/starts.epd"
[ -s "$work/starts.epd" ] || { fail "no 960 start positions in perft960.epd"; exit 1; }

echo "Match: $games Chess960 games, Tolva against $opponent_name, $tc, through $fastchess"
(cd "$work" && timeout 900 "$fastchess" -engine cmd="$tolva" name=tolva -engine cmd="$opponent" name="$opponent_name" \
  -each tc="$tc" proto=uci option.Hash=16 option.Threads=1 -variant fischerandom \
  -openings file=starts.epd format=epd order=sequential -rounds $(((games + 1) / 2)) -games 2 \
  -maxmoves 200 -pgnout file=games.pgn -log file=fastchess.log level=warn engine=true \
  >output.txt 2>&1)
status=$?
[ "$status" = 0 ] || fail "fastchess exited with $status"

played=$(grep -c '^\[Result "' "$work/games.pgn" 2>/dev/null)
[ "${played:-0}" -ge "$games" ] || fail "${played:-0} of $games games were saved"
grep -q '^\[Result "\*"\]' "$work/games.pgn" && fail "a game has no result"
grep -q '^\[Variant "' "$work/games.pgn" || fail "the games are not marked as Chess960"
endings=$(grep -h -i -E 'illegal|disconnect|crash|stall|forfeit|timeout|on time|does not match' "$work/output.txt" "$work/games.pgn")
[ -n "$endings" ] && fail "games ended badly or moves were refused: $endings"
problems=$(grep -h -i -E 'info string .*(refused|illegal|ignored)' "$work/fastchess.log" | head -5)
[ -n "$problems" ] && fail "Tolva refused what the host sent: $problems"
echo "Castlings in the games (both engines): $(grep -o -E 'O-O(-O)?' "$work/games.pgn" | wc -l)"
finish "$played Chess960 games finished, no illegal move, no fault, no loss on time" "$work/output.txt"
