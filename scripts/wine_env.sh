#!/bin/bash
# A desktop for Windows programs on this machine: an X server and a window manager of its own, and a Wine prefix in
# build/wine-prefix that is made once and used again.
#
#   source scripts/wine_env.sh
#   wine_start                              # X server, window manager, prefix
#   register_uia_server build/…/wine_automation.dll
#   in_wine program.exe argument …          # runs a Windows program and returns its exit code
#   screenshot build/form.png
#
# or, for one command: scripts/wine_env.sh [--uia-server DLL] COMMAND …
#
# Everything started here ends with the shell that sourced it, and only that.

WINE_ENV_SCRIPTS="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
WINE_ENV_ROOT="$(dirname "$WINE_ENV_SCRIPTS")"
export WINEPREFIX="${KORVANE_WINE_PREFIX:-$WINE_ENV_ROOT/build/wine-prefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree,mshtml=d"
export WINEARCH=win64
WINE_ENV_UIA_CLSID='{FF48DBA4-60EF-4201-AA87-54103EEF594E}'
WINE_ENV_SCREEN=1280x960x24
WINE_ENV_PIDS=()

wine_env_say() {
  printf 'wine_env: %s\n' "$*" >&2
}

wine_env_fail() {
  wine_env_say "$*"
  return 1
}

# One user at a time: programs of two users would see each other's windows, and the first to finish would end the Wine
# server, and with it the programs, of the other. The lock is descriptor 8, closed in what is started here, so that
# nothing left behind by a killed shell keeps it.
wine_env_lock() {
  mkdir -p "$(dirname "$WINEPREFIX")"
  exec 8>"$WINEPREFIX.lock" || return 1
  flock --nonblock 8 && return 0
  wine_env_say "waiting for another user of $WINEPREFIX"
  flock --wait 1800 8 || wine_env_fail "$WINEPREFIX stays in use"
}

wine_env_wait_until() {
  for _ in $(seq 100); do
    "$@" && return 0
    sleep 0.1
  done
  return 1
}

wine_env_has_window_manager() {
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

# Xvfb chooses a free display itself and writes its number when it is ready.
wine_env_start_display() {
  local number_file shield_file number
  number_file="$(mktemp)"
  shield_file="$(mktemp)"
  Xvfb -displayfd 7 -screen 0 "$WINE_ENV_SCREEN" -nolisten tcp -noreset 7>"$number_file" >/dev/null 2>&1 8>&- &
  WINE_ENV_PIDS+=($!)
  wine_env_wait_until test -s "$number_file"
  number="$(cat "$number_file")"
  rm -f "$number_file"
  [ -n "$number" ] || wine_env_fail "Xvfb did not start" || return 1
  export DISPLAY=":$number"
  openbox >/dev/null 2>&1 8>&- &
  WINE_ENV_PIDS+=($!)
  wine_env_wait_until wine_env_has_window_manager
  /usr/bin/python3 "$WINE_ENV_SCRIPTS/pointer_shield.py" >"$shield_file" 2>/dev/null 8>&- &
  WINE_ENV_PIDS+=($!)
  wine_env_wait_until test -s "$shield_file" || wine_env_fail "the pointer shield did not start" || return 1
  rm -f "$shield_file"
  wine_env_say "display $DISPLAY with openbox"
}

wine_env_make_prefix() {
  local ready="$WINEPREFIX/korvane-ready-2"
  if [ -f "$ready" ]; then
    wine_env_say "using the prefix $WINEPREFIX"
    return 0
  fi
  wine_env_say "making a prefix in $WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  wineboot -i >/dev/null 2>&1 </dev/null 8>&- || wine_env_fail "wineboot failed" || return 1
  # Wine draws the title bars itself: those of a window manager are not seen by programs.
  in_wine reg add 'HKCU\Software\Wine\X11 Driver' /v Decorated /d N /f >/dev/null ||
    wine_env_fail "cannot enter a setting in the registry" || return 1
  wineserver -w
  touch "$ready"
}

wine_start() {
  local program
  for program in wine wineserver Xvfb openbox xprop flock; do
    command -v "$program" >/dev/null || wine_env_fail "$program is not installed" || return 1
  done
  # A module of Debian's own Python.
  /usr/bin/python3 -c 'import Xlib' 2>/dev/null || wine_env_fail "python3-xlib is not installed" || return 1
  # Before the trap: a user who never had the prefix has nothing of it to stop.
  wine_env_lock || return 1
  trap wine_stop EXIT
  trap 'exit 130' INT
  trap 'exit 143' TERM HUP
  wine_env_start_display && wine_env_make_prefix
}

wine_stop() {
  local pid
  [ ${#WINE_ENV_PIDS[@]} -gt 0 ] || return 0
  # Only the server of this prefix, with the programs that run in it.
  wineserver -k >/dev/null 2>&1 && wineserver -w >/dev/null 2>&1
  for pid in "${WINE_ENV_PIDS[@]}"; do
    kill "$pid" 2>/dev/null
    wait "$pid" 2>/dev/null
  done
  WINE_ENV_PIDS=()
  exec 8>&-
  wine_env_say "display and Wine server stopped"
}

# Output goes through files: some Windows programs cannot write to a pipe.
in_wine() {
  local output status
  output="$(mktemp)"
  wine "$@" >"$output" 2>&1 </dev/null 8>&-
  status=$?
  tr -d '\r' <"$output"
  rm -f "$output"
  return $status
}

# Makes CoCreateInstance of the UI Automation client object load the given DLL, in every program of the prefix.
register_uia_server() {
  local path key="HKLM\\Software\\Classes\\CLSID\\$WINE_ENV_UIA_CLSID\\InprocServer32"
  [ -f "$1" ] || wine_env_fail "no such file: $1" || return 1
  path="$(winepath -w "$(realpath "$1")" 2>/dev/null)"
  in_wine reg add "$key" /ve /d "$path" /f >/dev/null &&
    in_wine reg add "$key" /v ThreadingModel /d Both /f >/dev/null ||
    wine_env_fail "cannot enter $path in the registry" || return 1
  wine_env_say "UI Automation is served by $path"
}

screenshot() {
  import -window root "$1"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  wine_start || exit 1
  if [ "$1" = --uia-server ]; then
    register_uia_server "$2" || exit 1
    shift 2
  fi
  in_wine "$@"
fi
