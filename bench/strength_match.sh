#!/usr/bin/env bash
# Plays a match between two engine binaries through Debian's xboard, headless
# under xvfb-run, and prints the score of the first engine with the Elo
# difference and its 95% error margin.
#
# Every opening of the list below is played twice, once with each engine as
# White, so that an unbalanced opening favours neither. Both engines get one
# core, no pondering and the same hash size.
#
# Usage: strength_match.sh <engine A> <engine B> [games] [time control]
#   games         default 100, an even number up to twice the openings (120)
#   time control  xboard's -tc and -inc, default "0:10 0.1" (10 s + 0.1 s)
# Environment: STRENGTH_MATCH_DIR keeps the PGN and logs there (default: a
#              new directory under /tmp, printed at the end).
# Exit status: 0 when the match ran, 1 on a failure, 77 when xboard, xvfb-run
# or xauth is missing.
set -u

engine_a=${1:-}
engine_b=${2:-}
games=${3:-100}
tc=${4:-0:10 0.1}
read -r tc_base tc_inc <<<"$tc"
tc_inc=${tc_inc:-0}

usage() { echo "usage: $0 <engine A> <engine B> [games] [\"base increment\"]"; exit 1; }
if [ ! -x "$engine_a" ] || [ ! -x "$engine_b" ]; then usage; fi
case "$games" in '' | *[!0-9]*) usage ;; esac
engine_a=$(readlink -f "$engine_a")
engine_b=$(readlink -f "$engine_b")

# shellcheck source=../tools/xboard_headless.sh
. "$(dirname "$(readlink -f "$0")")/../tools/xboard_headless.sh"
xboard_require

work=${STRENGTH_MATCH_DIR:-$(mktemp -d "${TMPDIR:-/tmp}/strength-match.XXXXXX")}
mkdir -p "$work/a" "$work/b"
pgn=$work/games.pgn
openings=$work/openings.pgn
rm -f "$pgn"

# Well-known openings, 6 to 12 plies, from open, semi-open and closed games
# alike, so that the engines meet pawn structures of every kind.
lines=(
  "e4 e5 Nf3 Nc6 Bb5 a6 Ba4 Nf6"
  "e4 e5 Nf3 Nc6 Bc4 Bc5 c3 Nf6"
  "e4 e5 Nf3 Nc6 d4 exd4 Nxd4 Nf6"
  "e4 e5 Nf3 Nf6 Nxe5 d6 Nf3 Nxe4"
  "e4 e5 Nc3 Nf6 f4 d5 fxe5 Nxe4"
  "e4 c5 Nf3 d6 d4 cxd4 Nxd4 Nf6 Nc3 a6"
  "e4 c5 Nf3 Nc6 d4 cxd4 Nxd4 g6"
  "e4 c5 Nf3 e6 d4 cxd4 Nxd4 Nc6"
  "e4 c5 Nc3 Nc6 g3 g6 Bg2 Bg7"
  "e4 c5 c3 Nf6 e5 Nd5 d4 cxd4"
  "e4 e6 d4 d5 Nc3 Bb4 e5 c5"
  "e4 e6 d4 d5 Nd2 Nf6 e5 Nfd7"
  "e4 e6 d4 d5 e5 c5 c3 Nc6"
  "e4 c6 d4 d5 Nc3 dxe4 Nxe4 Bf5"
  "e4 c6 d4 d5 e5 Bf5 Nf3 e6"
  "e4 d5 exd5 Qxd5 Nc3 Qa5 d4 Nf6"
  "e4 d6 d4 Nf6 Nc3 g6 f4 Bg7"
  "e4 Nf6 e5 Nd5 d4 d6 Nf3 Bg4"
  "e4 g6 d4 Bg7 Nc3 d6 Be3 a6"
  "d4 d5 c4 e6 Nc3 Nf6 Bg5 Be7"
  "d4 d5 c4 c6 Nf3 Nf6 Nc3 dxc4"
  "d4 d5 c4 dxc4 Nf3 Nf6 e3 e6"
  "d4 Nf6 c4 g6 Nc3 Bg7 e4 d6 Nf3 O-O"
  "d4 Nf6 c4 g6 Nc3 d5 cxd5 Nxd5 e4 Nxc3 bxc3 Bg7"
  "d4 Nf6 c4 e6 Nc3 Bb4 e3 O-O"
  "d4 Nf6 c4 e6 Nf3 b6 g3 Bb7"
  "d4 Nf6 c4 c5 d5 e6 Nc3 exd5 cxd5 d6"
  "d4 f5 g3 Nf6 Bg2 g6 Nf3 Bg7"
  "d4 Nf6 Nf3 e6 Bg5 c5 e3 h6"
  "d4 d5 Bf4 Nf6 e3 c5 c3 Nc6"
  "c4 e5 Nc3 Nf6 Nf3 Nc6 g3 d5"
  "c4 c5 Nc3 Nc6 g3 g6 Bg2 Bg7"
  "c4 e6 Nc3 d5 d4 Nf6 cxd5 exd5"
  "Nf3 d5 g3 Nf6 Bg2 e6 O-O Be7"
  "Nf3 Nf6 c4 b6 g3 Bb7 Bg2 e6"
  "e4 e5 f4 exf4 Nf3 g5 h4 g4"
  "e4 e5 Nf3 Nc6 Nc3 Nf6 Bb5 Bb4"
  "e4 e5 Nf3 d6 d4 exd4 Nxd4 Nf6"
  "e4 c5 Nf3 d6 Bb5+ Bd7 Bxd7+ Qxd7"
  "e4 c5 Nf3 Nc6 Bb5 g6 O-O Bg7"
  "e4 c5 Nf3 e6 d4 cxd4 Nxd4 a6"
  "e4 e6 d4 d5 exd5 exd5 Nf3 Nf6"
  "d4 Nf6 c4 e6 g3 d5 Bg2 Be7 Nf3 O-O"
  "d4 Nf6 c4 e6 Nf3 d5 Nc3 c6"
  "d4 Nf6 c4 c5 d5 b5 cxb5 a6"
  "d4 Nf6 c4 e6 Nf3 Bb4+ Bd2 Qe7"
  "d4 Nf6 Bg5 Ne4 Bf4 c5 f3 Qa5+ c3 Nf6"
  "e4 e5 Nf3 Nc6 Bc4 Nf6 d3 Be7"
  "e4 c5 d4 cxd4 c3 dxc3 Nxc3 Nc6"
  "b3 e5 Bb2 Nc6 e3 d5 Bb5 Bd6"
  "f4 d5 Nf3 Nf6 e3 g6 Be2 Bg7"
  "e4 e5 Bc4 Nf6 d3 c6 Nf3 d5"
  "d4 d5 Nf3 Nf6 c4 e6 Bg5 Nbd7"
  "e4 c6 c4 d5 exd5 cxd5 cxd5 Nf6"
  "Nf3 c5 c4 Nc6 Nc3 e5 g3 g6"
  "d4 Nf6 c4 d6 Nc3 e5 Nf3 Nbd7"
  "e4 e5 Nf3 Nc6 Bb5 Nf6 O-O Nxe4 d4 Nd6"
  "e4 e5 Nf3 Nc6 Bb5 a6 Bxc6 dxc6 O-O f6"
  "g3 d5 Bg2 e5 d3 Nf6 Nf3 Nc6"
  "e4 d6 d4 Nf6 Nc3 e5 Nf3 Nbd7"
)
if [ "$games" -lt 2 ] || [ $((games % 2)) != 0 ] || [ "$games" -gt $((2 * ${#lines[@]})) ]; then
  echo "FAIL: games must be even, from 2 to $((2 * ${#lines[@]})): '$games'"
  exit 1
fi

# The openings as a PGN file: xboard plays each game's moves, then the engines go on.
: >"$openings"
for i in "${!lines[@]}"; do
  read -ra moves <<<"${lines[$i]}"
  text=""
  for j in "${!moves[@]}"; do
    ((j % 2 == 0)) && text+="$((j / 2 + 1)). "
    text+="${moves[$j]} "
  done
  printf '[Event "Opening %d"]\n[Result "*"]\n\n%s*\n\n' "$((i + 1))" "$text" >>"$openings"
done

trap xboard_stop EXIT
trap 'exit 1' INT TERM

echo "Match: $games games, A = $engine_a, B = $engine_b, -tc $tc_base -inc $tc_inc, PGN in $pgn"

# xboard alternates colours game by game, and -lgi -2 moves on to the next
# opening every second game. Games that drag on past 200 moves are drawn;
# claims are checked so that a wrong claim loses.
xboard_start "$work" -fcp "$engine_a" -fd "$work/a" -fn A -scp "$engine_b" -sd "$work/b" -sn B \
  -mg "$games" -tc "$tc_base" -inc "$tc_inc" -xponder -smpCores 1 -defaultHashSize 64 -lgf "$openings" -lgi -2 \
  -autoCallFlag true -testClaims true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
  -adjudicateDrawMoves 200 -matchPause 500 -sgf "$pgn" -debug -nameOfDebugFile "$work/xboard-debug.log" -soundProgram true
wait "$xboard_pid"
xboard_stop

# Score of A from the result tags: 1 for a win, 0.5 for a draw.
summary=$(awk '
  /^\[White "/ { white = $2 }
  /^\[Result "/ {
    r = $2; gsub(/[\]"]/, "", r)
    a_white = (white == "\"A\"]")
    if (r == "1/2-1/2") d++
    else if ((r == "1-0" && a_white) || (r == "0-1" && !a_white)) w++
    else if (r == "1-0" || r == "0-1") l++
    else u++
  }
  END { printf "%d %d %d %d\n", w, d, l, u }
' "$pgn" 2>/dev/null)
read -r wins draws losses unfinished <<<"${summary:-0 0 0 0}"
played=$((wins + draws + losses))
echo "Games: $played finished ($unfinished without a result); A: +$wins =$draws -$losses"
if [ "$played" = 0 ]; then
  echo "FAIL: no finished game; see $work"
  exit 1
fi

# Elo from the score fraction, and the 95% interval from the spread of the
# single game results around it.
awk -v w="$wins" -v d="$draws" -v l="$losses" '
  function elo(s) { if (s <= 0) return -9999; if (s >= 1) return 9999; return -400 * log(1 / s - 1) / log(10) }
  BEGIN {
    n = w + d + l
    s = (w + d / 2) / n
    var = (w * (1 - s) ^ 2 + d * (0.5 - s) ^ 2 + l * s ^ 2) / n
    se = sqrt(var / n)
    lo = elo(s - 1.96 * se); hi = elo(s + 1.96 * se)
    printf "Score of A: %.1f / %d = %.1f%%\n", w + d / 2, n, 100 * s
    printf "Elo difference A - B: %+.0f +/- %.0f (95%%: %+.0f to %+.0f)\n", elo(s), (hi - lo) / 2, lo, hi
  }'
echo "Files of this run: $work"
