# shellcheck shell=bash
# What bench/sprt.sh and bench/gauntlet.sh share: finding fastchess, the match
# folder, the engine settings of a match and the sum of abnormal game ends.
# fastchess isn't a Debian package: build it with ../shared/tools/build-fastchess.sh
# (from the project root) or name it with FASTCHESS.

FASTCHESS=${FASTCHESS:-fastchess}
TC=${TC:-10+0.1}
HASH=${HASH:-16}
CONCURRENCY=${CONCURRENCY:-$(nproc)}
SEED=${SEED:-$(date +%s)}
OPENINGS=${OPENINGS:-$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/openings.epd}

require_fastchess() {
  command -v "$FASTCHESS" >/dev/null ||
    { echo "fastchess not found ('$FASTCHESS'): put it on the PATH or set FASTCHESS"; exit 77; }
}

# The match folder: PGN, fastchess's log and its config.json; engines start there.
make_match_dir() {
  MATCH_DIR=${MATCH_DIR:-$(mktemp -d "${TMPDIR:-/tmp}/tolva-match.XXXXXX")}
  mkdir -p "$MATCH_DIR"
}

# Tolva as fastchess's engine options, in the array `tolva`: one thread, no
# book, the match's hash, started in the match folder (no tolva.ini there).
tolva_engine() {  # binary name
  tolva=(-engine "cmd=$1" "name=$2" "dir=$MATCH_DIR" option.Threads=1 "option.Hash=$HASH" option.OwnBook=false proto=uci)
}

# Common match settings, in the array `match`: openings in random order, each
# played with both colours (pairs, for the pentanomial statistics), the
# adjudication that OpenBench uses.
match_options() {  # rounds
  match=(-openings "file=$OPENINGS" format=epd order=random -srand "$SEED" -rounds "$1" -games 2 -repeat
    -concurrency "$CONCURRENCY" -draw movenumber=40 movecount=8 score=10 -resign movecount=3 score=400)
}

# Runs fastchess with the log in the match folder; the console gets the
# running results without the line of every game, except abnormal ends.
run_fastchess() {  # log file, fastchess arguments...
  local log=$1
  shift
  (cd "$MATCH_DIR" && "$FASTCHESS" "$@") 2>&1 | sed -u 's/\x1b\[[0-9;]*m//g' | tee "$log" |
    grep --line-buffered -v -E '^Started game|^Finished game [0-9]+ \([^)]*\): [^{]*\{(Draw|White wins|Black wins|White mates|Black mates)'
}

# The last results block of a log: score, Elo, pentanomial counts, LLR.
last_results() {  # log file
  awk '/^Results of /{block=""} {block=block $0 "\n"} END{printf "%s", block}' "$1" |
    grep -v -E '^-+$|^Finished match|^Total Time' || true
}

# Prints the counts of games lost on time, by an illegal move, or by a crash
# or stall; with an engine name only that engine's (the opponent's are
# counted apart). False when there was any.
abnormal_ends() {  # log file [engine name]
  local line white black loser time=0 illegal=0 broken=0 others=0
  while IFS= read -r line; do
    white=$(sed -E 's/^Finished game [0-9]+ \(([^ ]+) vs ([^)]+)\).*/\1/' <<<"$line")
    black=$(sed -E 's/^Finished game [0-9]+ \(([^ ]+) vs ([^)]+)\).*/\2/' <<<"$line")
    case "$line" in *"{White"*) loser=$white ;; *"{Black"*) loser=$black ;; *) loser="" ;; esac
    if [ -n "${2:-}" ] && [ "$loser" != "$2" ]; then
      others=$((others + 1))
      continue
    fi
    case "${line,,}" in
      *"on time"* | *timeout*) time=$((time + 1)) ;;
      *illegal*) illegal=$((illegal + 1)) ;;
      *) broken=$((broken + 1)) ;;
    esac
  done < <(grep -i -E '^Finished game.*\{.*(on time|timeout|illegal|disconnect|stall|crash)' "$1" || true)
  local counts="time losses: $time, illegal moves: $illegal, disconnects or stalls: $broken"
  if [ -n "${2:-}" ]; then echo "$2: $counts (the opponent: $others such games)"; else echo "$counts"; fi
  [ $time -eq 0 ] && [ $illegal -eq 0 ] && [ $broken -eq 0 ]
}
