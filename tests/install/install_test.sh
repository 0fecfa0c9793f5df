#!/usr/bin/env bash
# Installs the build into a temporary DESTDIR under /usr, as the package does,
# and checks that exactly the engine's files land there, the xboard plugin
# file's three lines, the logo's PNG signature, and that the man page renders
# without a warning. Exit 77 (skipped) without groff.
# Usage: install_test.sh <build folder>
set -euo pipefail
command -v groff >/dev/null || { echo "SKIP: needs groff (apt-get install groff-base)"; exit 77; }
root=$(mktemp -d "${TMPDIR:-/tmp}/tolva-install.XXXXXX")
trap 'rm -rf "$root"' EXIT
DESTDIR=$root cmake --install "$1" --prefix /usr >/dev/null
check() { [ "$2" = "$3" ] || { printf 'FAIL: %s\n--- got:\n%s\n--- expected:\n%s\n' "$1" "$2" "$3"; exit 1; }; }

check "installed files" "$(cd "$root" && find . ! -type d | sort)" "./usr/games/tolva
./usr/share/doc/tolva/README.md
./usr/share/doc/tolva/tolva.ini
./usr/share/games/plugins/logos/tolva.png
./usr/share/games/plugins/xboard/tolva.eng
./usr/share/man/man6/tolva.6"
check "plugin file" "$(cat "$root/usr/share/games/plugins/xboard/tolva.eng")" $'plugin spec 0.0\ntolva\nchess'
check "PNG signature" "$(head -c 8 "$root/usr/share/games/plugins/logos/tolva.png" | od -An -tx1 | tr -d ' \n')" \
  89504e470d0a1a0a
check "groff warnings" "$(groff -man -ww -Tutf8 -z "$root/usr/share/man/man6/tolva.6" 2>&1)" ""
check "installed engine" "$(printf 'protover 2\nquit\n' | "$root/usr/games/tolva" | grep myname)" \
  'feature myname="Tolva 0.7.0"'
echo "PASS: installed files, plugin file, logo and man page"
