#!/usr/bin/env bash
# Tolva in UCI against Debian's UCI engines with fastchess, one match per
# opponent from the book openings of bench/openings.epd (each played with both
# colours); prints each score with the Elo difference and its 95 % margin.
#
# usage: bench/gauntlet.sh TOLVA [OPPONENT...]
# Opponents: glaurung, toga2, ethereal, and stockfish:ELO (Stockfish with
# UCI_LimitStrength at that UCI_Elo, 1350 to 2850). Default: glaurung toga2
# ethereal stockfish:1400 stockfish:1800 stockfish:2200; an engine that isn't
# installed is skipped (apt-get install glaurung toga2 ethereal-chess stockfish).
# Environment (defaults in parentheses): TC (10+0.1), GAMES per opponent (200),
# FASTCHESS (fastchess on the PATH), CONCURRENCY (the machine's cores), HASH MB
# per engine (16), SEED (the clock), MATCH_DIR (a new folder under /tmp).
# Exit 0 when Tolva had no time loss, illegal move or crash in any match (the
# opponents' are counted apart), 1 otherwise, 2 on wrong usage, 77 without fastchess.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=SCRIPTDIR/fastchess_common.sh
. "$here/fastchess_common.sh"

if [ $# -lt 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 TOLVA [glaurung|toga2|ethereal|stockfish:ELO ...]"
  exit 2
fi
GAMES=${GAMES:-200}
require_fastchess
make_match_dir
tolva_binary=$(readlink -f "$1")
shift
opponents=("$@")
((${#opponents[@]})) || opponents=(glaurung toga2 ethereal stockfish:1400 stockfish:1800 stockfish:2200)

find_engine() {  # Debian puts them under /usr/games
  command -v "$1" 2>/dev/null || { [ -x "/usr/games/$1" ] && echo "/usr/games/$1"; } || true
}

# Sets `binary` and `options` (fastchess engine options) for an opponent; false when it isn't installed.
opponent_engine() {
  local elo
  case "$1" in
    glaurung) binary=$(find_engine glaurung) options=(option.Threads=1 option.OwnBook=false) ;;
    toga2) binary=$(find_engine toga2) options=("option.Number of Threads=1" option.OwnBook=false) ;;
    ethereal) binary=$(find_engine ethereal-chess) options=(option.Threads=1) ;;
    stockfish:*)
      elo=${1#stockfish:}
      binary=$(find_engine stockfish)
      options=(option.Threads=1 option.UCI_LimitStrength=true "option.UCI_Elo=$elo")
      ;;
    *) return 2 ;;
  esac
  [ -n "$binary" ]
}

for opponent in "${opponents[@]}"; do
  status=0
  opponent_engine "$opponent" || status=$?
  [ $status -ne 2 ] || { echo "unknown opponent $opponent: glaurung, toga2, ethereal or stockfish:ELO"; exit 2; }
done

echo "Gauntlet of $tolva_binary: $TC, $GAMES games per opponent, $CONCURRENCY at once, seed $SEED, logs in $MATCH_DIR"
summary=()
clean=true
for opponent in "${opponents[@]}"; do
  if ! opponent_engine "$opponent"; then
    echo "== $opponent: not installed, skipped"
    summary+=("$opponent: not installed, skipped")
    continue
  fi
  name=${opponent/:/-}
  log=$MATCH_DIR/$name.log
  echo "== Tolva against $opponent ($binary)"
  tolva_engine "$tolva_binary" tolva
  match_options $(((GAMES + 1) / 2))
  run_fastchess "$log" "${tolva[@]}" -engine "cmd=$binary" "name=$name" "dir=$MATCH_DIR" proto=uci "option.Hash=$HASH" \
    "${options[@]}" -each tc="$TC" "${match[@]}" -pgnout file="$MATCH_DIR/$name.pgn" >/dev/null
  # Tolva's view from the last results block: games, score, Elo with its margin.
  block=$(last_results "$log")
  games=$(grep -o -E '^Games: [0-9]+, Wins: [0-9]+, Losses: [0-9]+, Draws: [0-9]+, Points: [0-9.]+ \([0-9.]+ %\)' <<<"$block" || true)
  elo=$(grep -o -E '^Elo: [-0-9.inf]+ \+/- [-0-9.naninf]+' <<<"$block" || true)
  ends=$(abnormal_ends "$log" tolva) || clean=false
  summary+=("$opponent: ${games:-no result}; ${elo:-no Elo}; $ends")
  echo "${summary[-1]}"
done

echo "Results for Tolva ($TC):"
printf '  %s\n' "${summary[@]}"
$clean
