#!/usr/bin/env bash
# Fails when a file under src/ includes a header of a higher layer, or of
# another folder of its own layer (eval, tablebase and book stay apart; so do
# the two front ends). main.cpp, at the top, may include any layer.
src="${1:?usage: include_layers_test.sh SRC_DIR}"
declare -A rank=([board]=0 [eval]=1 [tablebase]=1 [book]=1 [search]=2 [diagnostics]=3 [player]=4 [xboard]=5
  [uci]=5)
status=0
for folder in "$src"/*/; do
  name=$(basename "$folder")
  [ -n "${rank[$name]}" ] || { echo "$name/: a folder without a layer"; status=1; }
done
while IFS=: read -r file _ line; do
  from=$(basename "$(dirname "$file")")
  to=$(sed -n 's/^#include "\([a-z_]*\)\/.*/\1/p' <<<"$line")
  [ -z "$to" ] || [ "$from" = "$to" ] && continue
  if [ -z "${rank[$to]}" ] || [ "${rank[$to]}" -ge "${rank[$from]}" ]; then
    echo "${file#"$src"/}: $from includes $to: $line"
    status=1
  fi
done < <(grep -rn '^#include "' "$src"/*/)
exit $status
