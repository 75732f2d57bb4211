#!/usr/bin/env bash
# Installs every package that building, testing and rendering need (Debian 12 or a newer Ubuntu).
# This is the one list; every other script calls this one. Does nothing when all are there.
set -euo pipefail

packages=(
  # cross toolchain and build
  g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64 cmake ninja-build git
  # native tests of the pure logic; clang as a second compiler, formatter and linter
  g++ clang clang-format clang-tidy libclang-rt-dev
  # headers used by the host program, the reference renderer and the tests
  libcli11-dev nlohmann-json3-dev libstb-dev librapidxml-dev googletest
  # running Windows programs, with windows
  wine wine64 libwine-dev wine64-tools xvfb xauth
  # video in and out, and end-to-end tests that compare pictures
  ffmpeg python3 python3-numpy python3-pytest python3-pytest-rerunfailures
  # an independent reader of compound documents
  python3-olefile
  # the installer
  nsis
)

installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${packages[@]}" 2>/dev/null || true)
missing=()
for package in "${packages[@]}"; do
  grep -qxF "installed $package" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

if ! command -v apt-get >/dev/null; then
  echo "setup: this system has no apt-get; install these packages (Debian names): ${missing[*]}" >&2
  exit 1
fi
sudo=()
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    sudo=(sudo -n)
  else
    echo "setup: packages are missing and this user may not install them; run as root:" >&2
    echo "  apt-get install ${missing[*]}" >&2
    exit 1
  fi
fi
echo "setup: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq >&2
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
