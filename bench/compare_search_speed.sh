#!/bin/sh
# Nodes per second of two builds side by side: the search benchmark's work
# (tolva_search_nodes: 32 positions to depth 9, one thread) of each,
# alternating, several rounds, then the medians and their ratio. Speed is
# nodes per second of the search's own CPU time, which a busy machine
# disturbs far less than the wall clock. The node totals must agree.
#
# For a commit that lacks the tool, build it against that commit's library:
#   g++ -std=c++20 -O3 -DNDEBUG -flto=auto -I<tree>/src \
#     -DTOLVA_BENCH_DATA_DIR='"<tree>/tests/data"' bench/tools/search_nodes.cpp \
#     <tree>/build/libtolva_engine.a -lz -llzma -lpthread -o ref_search_nodes
#
# usage: bench/compare_search_speed.sh reference/tolva_search_nodes new/tolva_search_nodes [rounds]
set -eu
ref=$1 new=$2 rounds=${3:-5}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# "positions 32 depth 9 nodes N cpu S s nps R" -> "N R"
one() { "$1" 9 32 2>/dev/null | awk '/^positions/ { print $6, $11 }'; }

i=1
while [ "$i" -le "$rounds" ]; do
  one "$ref" >>"$tmp/ref"
  one "$new" >>"$tmp/new"
  i=$((i + 1))
done

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
for side in ref new; do
  echo "$side: nodes $(cut -d' ' -f1 "$tmp/$side" | sort -u | tr '\n' ' ')nps $(cut -d' ' -f2 "$tmp/$side" | tr '\n' ' ')"
done
rm_=$(cut -d' ' -f2 "$tmp/ref" | median)
nm=$(cut -d' ' -f2 "$tmp/new" | median)
echo "median nps: reference $rm_, new $nm, ratio $(awk -v a="$nm" -v b="$rm_" 'BEGIN { printf "%.3f", a / b }')"
# Each round's two runs lie next to each other in time, so the ratio within a
# round is spared the machine's slower drifts.
paired=$(paste -d' ' "$tmp/ref" "$tmp/new" | awk '{ printf "%.4f\n", $4 / $2 }' | median)
echo "median of the rounds' ratios: $paired"
