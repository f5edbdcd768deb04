#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs every Debian package that building, testing and packaging use; with 'build' as its argument
# what the program is built with, and no more. Quick when all is there.
set -eu
cd "$(dirname "$0")/.."
for_what=${1:-everything}

packages="
  build-essential ca-certificates cmake ninja-build pkg-config
  libtinyxml-dev libspdlog-dev libpango1.0-dev libbitstream-dev libavformat-dev libavcodec-dev libavutil-dev libpng-dev zlib1g-dev
  nlohmann-json3-dev libcli11-dev googletest libbenchmark-dev
  libtesseract-dev libhunspell-dev tesseract-ocr-eng
"

if [ "$for_what" != build ]; then
  packages="$packages
    clang clang-format-14 clang-tidy-14 libclang-rt-14-dev ccache
    g++-mingw-w64-x86-64-posix wine64 fonts-dejavu-core dpkg-dev debhelper dh-python lintian nsis reuse zip unzip
    chromium ffmpeg hunspell-en-us
    abigail-tools pybind11-dev python3-dev
    slurmctld slurmd slurm-client munge parallel snakemake
  "
  # Any Node.js will do; Debian's where there is none.
  command -v npm >/dev/null || packages="$packages nodejs npm"
fi

missing=""
for package in $packages; do
  status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing="$missing $package"
done

if [ -n "$missing" ]; then
  as_root=""
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "setup: these packages are missing, and neither root nor sudo is here to install them:$missing" >&2
      exit 1
    }
    as_root="sudo"
  fi
  echo "setup: installing$missing"
  export DEBIAN_FRONTEND=noninteractive
  $as_root apt-get -qq update
  # shellcheck disable=SC2086  # one word per package
  $as_root apt-get -qq install -y --no-install-recommends $missing >/dev/null
fi

[ "$for_what" != build ] || exit 0

scripts/fetch-tinyxml.sh

# What tests take from npm, in the versions of the lock file.
installed=tests/tools/node_modules/.package-lock.json
if [ ! "$installed" -nt tests/tools/package-lock.json ]; then
  echo "setup: installing the packages of tests/tools"
  npm ci --silent --no-audit --no-fund --prefix tests/tools
  touch "$installed"
fi
