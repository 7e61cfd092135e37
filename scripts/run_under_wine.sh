#!/bin/bash
# Runs a Windows host that uses korvane.dll without a screen, under Wine, as continuous integration on Linux does:
#
#   scripts/run_under_wine.sh [--start PROGRAM]... [--picture FILE] [--timeout SECONDS] HOST [ARGUMENT...]
#
#   --start PROGRAM      a Windows program to automate: its window shows before the host starts, and it ends after it
#   --picture FILE       a picture of the screen (PNG) when the host has ended
#   --timeout SECONDS    ends a host that takes longer, with code 124; 300 by default
#
# Ends with the host's exit code. UI Automation, which Wine lacks, is served by wine_automation.dll over the real windows,
# and korvane.dll is found without being beside the host.
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(dirname "$here")"

usage() {
  sed -n '4,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
  exit 2
}

programs=()
picture=""
limit=300
while [ $# -gt 0 ]; do
  case "$1" in
    --start | --picture | --timeout)
      [ $# -ge 2 ] || usage
      case "$1" in
        --start) programs+=("$2") ;;
        --picture) picture=$2 ;;
        --timeout) limit=$2 ;;
      esac
      shift 2
      ;;
    -*) usage ;;
    *) break ;;
  esac
done
[ $# -gt 0 ] || usage

# In the package, and where it was built.
for folder in "$root/wine:$root/bin" "$root/build/windows/bin:$root/build/windows/bin"; do
  server="${folder%%:*}/wine_automation.dll"
  [ -f "$server" ] && [ -f "${folder##*:}/korvane.dll" ] && break
  server=""
done
if [ -z "$server" ]; then
  echo "run_under_wine: no wine_automation.dll and korvane.dll below $root; ./package builds them" >&2
  exit 1
fi
for program in "${programs[@]}" "$1"; do
  if [ ! -f "$program" ]; then
    echo "run_under_wine: no such program: $program" >&2
    exit 1
  fi
done

if [ -f "$here/setup.sh" ]; then
  source "$here/setup.sh"
  setup windows || exit 1
fi
source "$here/wine_env.sh"
# A crash ends the program instead of starting a debugger that waits for somebody.
export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winedbg.exe=d"
wine_start && register_uia_server "$server" || exit 1
WINEPATH="$(winepath -w "${folder##*:}" 2>/dev/null)"
export WINEPATH

windows_on_screen() {
  xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-f]*' | wc -l
}

for program in "${programs[@]}"; do
  before="$(windows_on_screen)"
  # Ended with the Wine server.
  wine "$program" >/dev/null 2>&1 </dev/null 8>&- &
  for _ in $(seq 300); do
    [ "$(windows_on_screen)" -gt "$before" ] && break
    sleep 0.1
  done
  if [ "$(windows_on_screen)" -le "$before" ]; then
    echo "run_under_wine: $program shows no window within 30 s" >&2
    exit 1
  fi
done
output="$(mktemp)"
timeout --kill-after=10 "$limit" wine "$@" >"$output" 2>&1 </dev/null 8>&-
status=$?
tr -d '\r' <"$output"
rm -f "$output"
[ $status -ne 124 ] || echo "run_under_wine: ended after $limit s" >&2
[ -z "$picture" ] || screenshot "$picture"
exit $status
