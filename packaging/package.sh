#!/usr/bin/env bash
# package.sh BUILD...: makes the packages of these build trees and tries them: a program is compiled against each and
# run. The .deb is installed for that and taken off again, which needs root.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# cached BUILD VARIABLE: as the build was configured.
cached() { sed -n "s/^$2:[^=]*=//p" "$1/CMakeCache.txt"; }

# A toolchain file's compiler is not in the cache.
compiler() { sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")$/\1/p' "$1"/CMakeFiles/*/CMakeCXXCompiler.cmake; }

# try_package BUILD PREFIX: what was unpacked or installed there serves a program.
try_package() {
  local suffix=""
  [ -z "$(cached "$1" CMAKE_TOOLCHAIN_FILE)" ] || suffix=.exe
  cmake -D WAY=unpacked -D "PREFIX=$2" -D "VERSION=$(cached "$1" CMAKE_PROJECT_VERSION)" \
    -D "CONSUMER=$PWD/tests/install/consumer" -D "WORK=$PWD/$1/packages/try" -D "SUFFIX=$suffix" \
    -D "TOOLCHAIN=$(cached "$1" CMAKE_TOOLCHAIN_FILE)" -D "COMPILER=$(compiler "$1")" \
    -D "EMULATOR=$(cached "$1" ZELTO_WINE)" -D "PKG_CONFIG=$(command -v pkg-config)" -P tests/install/install_test.cmake
}

quiet_apt() { apt-get -o DPkg::Lock::Timeout=300 -y -qq "$@" >/dev/null; }

try_deb() {
  local deb=$1 build=$2 left=0 path views
  if [ "$(id -u)" -ne 0 ] || dpkg-query -W zelto >/dev/null 2>&1; then
    echo "Not tried, needs root and a system without the package: $deb"
    return
  fi
  trap 'quiet_apt purge zelto' EXIT
  quiet_apt install "./$deb"
  try_package "$build" /usr
  views=$(gdb -nx -batch -ex 'break main' -ex run -ex 'info pretty-printer' "$build/packages/try/programs/consumer" 2>&1)
  case "$views" in
    *UtcTime*) ;;
    *) printf '%s\n' "GDB does not load its views:" "$views" && return 1 ;;
  esac
  quiet_apt purge zelto
  trap - EXIT
  while read -r path; do
    if [ -e "$path" ] && { [ ! -d "$path" ] || [[ "${path,,}" == *zelto* ]]; }; then
      echo "Left behind: $path"
      left=1
    fi
  done < <(dpkg-deb --contents "$deb" | awk '{print $6}' | sed 's/^\.//')
  [ "$left" -eq 0 ]
  echo "Installed, works, uninstalled: $deb"
}

for build in "$@"; do
  rm -rf "$build/packages"
  (cd "$build" && cpack >packages.log) || { cat "$build/packages.log"; exit 1; }
  for package in "$build"/packages/zelto*.*; do
    case "$package" in
      *.zip)
        mkdir -p "$build/packages/unpacked"
        (cd "$build/packages/unpacked" && cmake -E tar xf "../$(basename "$package")")
        try_package "$build" "$PWD/$build/packages/unpacked/$(basename "$package" .zip)"
        echo "Unpacked, works: $package"
        ;;
      *.deb) try_deb "$package" "$build" ;;
    esac
  done
done
