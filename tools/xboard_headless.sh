# Sourced by the host tests under tests/host and by bench/strength_match.sh:
# Debian's xboard run headless under xvfb-run, and the clean-up of every
# process it started.

# A program on the PATH or in /usr/games; nothing when it isn't installed.
find_program() {
  if command -v "$1" >/dev/null 2>&1; then command -v "$1"; elif [ -x "/usr/games/$1" ]; then echo "/usr/games/$1"; fi
}

# Exits with 77 (skipped) unless xboard, xvfb-run, xauth (xvfb-run can't start
# a server without it) and the programs named are installed.
xboard_require() {
  local name missing=""
  for name in xboard xvfb-run xauth "$@"; do
    [ -n "$(find_program "$name")" ] || missing="$missing $name"
  done
  if [ -n "$missing" ]; then
    echo "SKIP: needs$missing (apt-get install -y xboard xvfb xauth $*)"
    exit 77
  fi
}

# Starts xboard in the background with the options given, its output in
# WORK/xboard-output.txt. HOME is WORK, so that no settings of the user are
# read or written. A new session makes the tree one process group, and each
# process inherits a marker, so that whatever is left at the end, even if it
# left the group, can be found and ended by id.
# Usage: xboard_start WORK [xboard options...]; sets xboard_pid.
xboard_start() {
  xboard_work=$1
  shift
  XBOARD_HEADLESS_RUN=$xboard_work HOME=$xboard_work setsid "$(find_program xvfb-run)" -a -s "-screen 0 1024x768x24" \
    "$(find_program xboard)" -noGUI -xexit -saveSettingsOnExit false "$@" \
    >"$xboard_work/xboard-output.txt" 2>&1 </dev/null &
  xboard_pid=$!
}

# The ids of the processes that xboard_start began.
xboard_processes() {
  local dir pid
  [ -n "${xboard_work:-}" ] || return 0
  for dir in /proc/[0-9]*; do
    pid=${dir#/proc/}
    [ "$pid" = "$$" ] && continue
    grep -qzxF "XBOARD_HEADLESS_RUN=$xboard_work" "$dir/environ" 2>/dev/null && echo "$pid"
  done
}

# Ends them: the group first, then whatever is left, by id.
xboard_stop() {
  local pids
  [ -n "${xboard_pid:-}" ] && kill -TERM -- "-$xboard_pid" 2>/dev/null
  for _ in 1 2 3 4 5 6 7 8 9 10; do
    pids=$(xboard_processes)
    [ -z "$pids" ] && break
    sleep 0.5
  done
  # shellcheck disable=SC2086
  [ -n "$pids" ] && kill -KILL $pids 2>/dev/null
  [ -n "${xboard_pid:-}" ] && kill -KILL -- "-$xboard_pid" 2>/dev/null
  xboard_pid=""
}
