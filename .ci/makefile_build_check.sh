#!/usr/bin/env bash
# The root Makefile as an OpenBench worker uses it: a copy of the tree built
# with make and g++ alone, `EXE` outside it. Checks that nothing but EXE is
# written outside the copy and that the binary's bench gives the recorded
# signature (the protocol test holds the CMake build to the same number).
# Usage: .ci/makefile_build_check.sh <project folder>
set -euo pipefail
project=$1
work=$(mktemp -d "${TMPDIR:-/tmp}/tolva-make.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/tree" "$work/out"
cp -r "$project/Makefile" "$project/src" "$work/tree/"
touch "$work/before"
make -C "$work/tree" -j"$(nproc)" EXE="$work/out/Tolva-make" CC=gcc >"$work/make.log" 2>&1 ||
  { tail -30 "$work/make.log"; echo "FAIL: make"; exit 1; }
# Nothing new outside the copy but EXE (and the log).
outside=$(find "$work" -newer "$work/before" ! -path "$work" ! -path "$work/tree*" ! -path "$work/out/Tolva-make" ! -path "$work/out" \
  ! -path "$work/make.log")
[ -z "$outside" ] || { echo "FAIL: written outside the tree: $outside"; exit 1; }
! grep -q "warning" "$work/make.log" || { grep "warning" "$work/make.log"; echo "FAIL: compiler warnings"; exit 1; }
last=$(cd "$work" && ./out/Tolva-make bench | tail -1)
expected="$(cat "$project/tests/data/bench-signature") nodes"
[[ "$last" =~ ^[0-9]+\ nodes\ [0-9]+\ nps$ && "$last" == "$expected "* ]] ||
  { echo "FAIL: bench of the make build: '$last', expected '$expected ... nps'"; exit 1; }
echo "PASS: make build, nothing outside the tree but EXE, $last"
