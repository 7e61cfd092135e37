#!/bin/bash
# Installs what is missing to build and test, and nothing that is there already.
#
#   [KORVANE_SUDO=1] scripts/setup.sh [native] [checks] [windows] [host] [package] [consumers] [lint] [fuzz] [coverage] [bench]
#
# (the first three by default)
#
# or sourced, for `setup native` and the like, which return 1 and say why in SETUP_PROBLEM when something stays missing.

# What each purpose needs: a Debian package and the command or file that shows it is there.
setup_needs() {
  case "$1" in
    native)
      echo cmake cmake
      echo ninja-build ninja
      echo g++ g++
      echo googletest /usr/src/googletest/CMakeLists.txt
      echo python3 python3
      echo libcli11-dev /usr/include/CLI/CLI.hpp
      echo nlohmann-json3-dev /usr/include/nlohmann/json.hpp
      echo libstb-dev /usr/include/stb/stb_image_write.h
      echo valgrind valgrind
      ;;
    windows)
      setup_needs native
      echo g++-mingw-w64-x86-64-win32 x86_64-w64-mingw32-g++-win32
      echo wine wine
      echo wine64 /usr/lib/wine/wine64
      echo xvfb Xvfb
      echo xauth xauth
      echo openbox openbox
      echo x11-utils xprop
      echo python3-xlib /usr/lib/python3/dist-packages/Xlib/__init__.py
      echo imagemagick import
      echo libwine-dev /usr/include/wine/wine/windows/uiautomationclient.h
      ;;
    package)
      setup_needs native
      echo g++-mingw-w64-x86-64-win32 x86_64-w64-mingw32-g++-win32
      echo llvm llvm-dlltool
      echo nodejs node
      echo npm npm
      echo mono-mcs mcs
      echo libmono-system-runtime-serialization4.0-cil /usr/lib/mono/4.5/System.Runtime.Serialization.dll
      echo libmono-system-xml-linq4.0-cil /usr/lib/mono/4.5/System.Xml.Linq.dll
      # Modules of Debian's own Python.
      echo python3 /usr/bin/python3
      echo python3-setuptools /usr/lib/python3/dist-packages/setuptools/__init__.py
      echo python3-wheel /usr/lib/python3/dist-packages/wheel/__init__.py
      ;;
    consumers)
      setup_needs package
      setup_needs windows
      echo pkgconf pkg-config
      echo python3-venv /usr/lib/python3.*/ensurepip/__init__.py
      echo python3-pip /usr/lib/python3/dist-packages/pip/__init__.py
      echo mypy mypy
      echo mono-runtime mono
      echo mono-utils monodis
      echo unzip unzip
      ;;
    host)
      setup_needs windows
      # The browser's driver is a module of Debian's own Python.
      echo python3 /usr/bin/python3
      echo nsis makensis
      echo xdotool xdotool
      echo chromium chromium
      echo chromium-driver chromedriver
      echo python3-selenium /usr/lib/python3/dist-packages/selenium/__init__.py
      ;;
    checks)
      setup_needs native
      echo clang clang
      # The one version that Debian 12 and 13 both have: two versions would ask for two formattings.
      echo clang-format-19 clang-format-19
      echo libwine-dev /usr/include/wine/wine/windows/uiautomationclient.h
      ;;
    lint)
      setup_needs native
      echo clang-tidy clang-tidy-14
      ;;
    coverage)
      setup_needs fuzz
      echo llvm llvm-cov
      ;;
    bench)
      setup_needs native
      echo libbenchmark-dev /usr/include/benchmark/benchmark.h
      ;;
    fuzz)
      setup_needs native
      echo clang clang++
      echo libclang-rt-dev '/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a'
      ;;
    *)
      echo "setup: no such purpose: $1" >&2
      return 1
      ;;
  esac
}

setup_missing() {
  local package shown
  setup_needs "$1" | sort -u | while read -r package shown; do
    if [[ $shown == /* ]]; then
      compgen -G "$shown" >/dev/null
    else
      type -P "$shown" >/dev/null
    fi || echo "$package"
  done
}

# What each purpose is for, as it is told before anything is installed.
setup_reason() {
  case "$1" in
    native) echo "to build the library, its stand-ins and the companion program here" ;;
    windows) echo "to build korvane.dll and to run it under Wine, on a screen that nobody sees" ;;
    package) echo "to build what is shipped" ;;
    consumers) echo "to install and use what is shipped as its users do" ;;
    host) echo "to test the companion program and its report in a browser" ;;
    checks) echo "to check interfaces, formatting and declarations" ;;
    lint) echo "to look for mistakes with clang-tidy" ;;
    coverage) echo "to count executed lines" ;;
    bench) echo "to measure" ;;
    fuzz) echo "to fuzz" ;;
  esac
}

# As root, or with sudo where the environment asks for it: KORVANE_SUDO=1.
setup_as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif [ "${KORVANE_SUDO:-}" = 1 ]; then
    sudo "$@"
  else
    return 127
  fi
}

setup_list_missing() {
  local missing
  missing="$(setup_missing "$1" | tr '\n' ' ')"
  echo "${missing% }"
}

# Runs a command and writes how long it takes while it does.
setup_with_progress() {
  local what=$1 output=$2 started=$SECONDS pid status
  shift 2
  "$@" >>"$output" 2>&1 </dev/null &
  pid=$!
  while kill -0 $pid 2>/dev/null; do
    [ ! -t 1 ] || printf '\r  %s ... %d s' "$what" $((SECONDS - started))
    sleep 0.5
  done
  wait $pid
  status=$?
  [ ! -t 1 ] || printf '\r'
  printf '  %s: %d s\n' "$what" $((SECONDS - started))
  return $status
}

setup() {
  local purpose=$1 missing output
  SETUP_PROBLEM=""
  missing="$(setup_list_missing "$purpose")"
  [ -n "$missing" ] || return 0

  if ! command -v apt-get >/dev/null || ! setup_as_root true; then
    SETUP_PROBLEM="not installed: $missing (as root: apt-get install --no-install-recommends $missing; \
with KORVANE_SUDO=1 in the environment, this script does it with sudo)"
    echo "setup: $purpose: $SETUP_PROBLEM" >&2
    return 1
  fi
  echo "setup: $(setup_reason "$purpose"), these Debian packages and what they need are installed now:"
  echo "  $missing"
  output="$(mktemp)"
  # The package lists may be old or absent: they are fetched only when there is something to install.
  setup_with_progress "package lists" "$output" setup_as_root apt-get -qq update
  # shellcheck disable=SC2086
  setup_with_progress "packages" "$output" \
    setup_as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends $missing
  missing="$(setup_list_missing "$purpose")"
  if [ -n "$missing" ]; then
    tail -n 15 "$output" >&2
    SETUP_PROBLEM="cannot install: $missing"
    echo "setup: $purpose: $SETUP_PROBLEM" >&2
    rm -f "$output"
    return 1
  fi
  rm -f "$output"
}

# Node.js for Windows, the library with which Node.js calls DLLs, and the TypeScript compiler: below build/, in the versions
# and with the sums that the lock file says. Some bring binaries for another system along, which npm has to be told to take.
setup_node_packages() {
  local root folder wanted output
  root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
  folder="$root/build/node"
  wanted="$root/tests/package/node/package-lock.json"
  ! cmp -s "$wanted" "$folder/installed" || return 0
  echo "setup: consumers: installing Node.js for Windows, koffi and TypeScript in $folder"
  mkdir -p "$folder"
  cp "$root"/tests/package/node/package*.json "$folder"
  if ! output="$(cd "$folder" && npm ci --ignore-scripts --force --no-audit --no-fund 2>&1 </dev/null)"; then
    SETUP_PROBLEM="npm cannot install what $wanted says"
    printf '%s\n' "$output" | tail -n 15 >&2
    echo "setup: consumers: $SETUP_PROBLEM" >&2
    return 1
  fi
  cp "$wanted" "$folder/installed"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  [ $# -gt 0 ] || set -- native checks windows
  failed=0
  for purpose in "$@"; do
    if setup "$purpose" && { [ "$purpose" != consumers ] || setup_node_packages; }; then
      echo "setup: $purpose: everything is there"
    else
      failed=1
    fi
  done
  exit $failed
fi
