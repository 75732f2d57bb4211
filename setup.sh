#!/usr/bin/env bash
# Installs every package that building, testing and rendering need (Debian 12 or a newer Ubuntu),
# with --render only what building the programs for rendering, and rendering, need.
# This is the one list; every other script calls this one. Does nothing when all are there.
set -euo pipefail

packages=(
  # cross toolchain and build
  g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64 mingw-w64-tools cmake ninja-build
  # headers used by the host program and the reference renderer
  libcli11-dev nlohmann-json3-dev libstb-dev librapidxml-dev
  # running Windows programs
  wine wine64
  # video in and out
  ffmpeg python3
)
test_packages=(
  git
  # native tests of the pure logic; clang as a second compiler, formatter and linter
  g++ clang lld clang-format clang-tidy libclang-rt-dev
  googletest
  # windows without a screen
  xvfb xauth
  # end-to-end tests that compare pictures; checks of the Python code
  python3-numpy python3-pytest python3-pytest-rerunfailures black pyflakes3 mypy shellcheck
  # the installer
  nsis
  # a cluster of one node
  slurmctld slurmd slurm-client munge
)
case ${1:-} in
  --render) ;;
  '') packages+=("${test_packages[@]}") ;;
  *)
    echo "setup: $1: there is no such option; give --render or nothing" >&2
    exit 2
    ;;
esac

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
