#!/bin/sh
# Builds Tolva with profile-guided optimisation in the given build folder
# (default build-pgo): an instrumented build first, trained on a short fixed
# search (the search benchmark's positions to depth 8) and a perft of the
# start position to depth 5, then the optimised build from that profile.
#
# usage: bench/pgo_build.sh [build-folder]
set -eu
dir=${1:-build-pgo}
case $dir in
  /*) profile="$dir/pgo-profile" ;;
  *) profile="$(pwd)/$dir/pgo-profile" ;;
esac
rm -rf "$profile"
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTOLVA_PGO=GENERATE -DTOLVA_PGO_DIR="$profile" >/dev/null
cmake --build "$dir" -j2 --target tolva tolva_search_nodes
"$dir/bench/tolva_search_nodes" 8 32
printf 'perft 5\nquit\n' | "$dir/tolva" >/dev/null
cmake -S . -B "$dir" -G Ninja -DTOLVA_PGO=USE >/dev/null
cmake --build "$dir" -j2
echo "profile-guided build in $dir"
