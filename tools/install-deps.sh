#!/usr/bin/env bash
# Installs what building and testing Tolva needs, skipping what is already there.
set -euo pipefail
packages=(g++ cmake ninja-build zlib1g-dev liblzma-dev libgtest-dev libbenchmark-dev xboard xvfb xauth fairymax polyglot gaviotatb
  groff-base dpkg-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if ((${#missing[@]})); then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y "${missing[@]}"
fi
