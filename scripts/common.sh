# Shared by the scripts: where the project is, and the packages that each job needs.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$ROOT"

BUILD_PACKAGES=(cmake ninja-build g++ ccache pkg-config rapidjson-dev libcli11-dev libfmt-dev)
TEST_PACKAGES=(libgtest-dev libgmock-dev)
CLANG_PACKAGES=(clang libclang-rt-14-dev)
WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix googletest wine wine64 python3)
TIDY_PACKAGES=(clang clang-tidy clang-format)

say() { printf '\n== %s\n' "$*"; }

# Installs what is missing of the named packages. Without the right to do so, names what is missing.
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "missing packages: ${missing[*]} (install them, or run as root)" >&2
      exit 1
    }
    sudo=(sudo)
  fi
  say "installing ${missing[*]}"
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Configures and builds one preset whole; further arguments go to the configuration and may leave parts out.
build() {
  local preset=$1
  shift
  say "building preset $preset"
  cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DZELMAR_KOR_HOST=ON -DZELMAR_KOR_TESTS=ON "$@" >"build-$preset.log" 2>&1 || {
    cat "build-$preset.log" >&2
    exit 1
  }
  rm -f "build-$preset.log"
  cmake --build --preset "$preset" -- --quiet
}
