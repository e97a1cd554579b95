#!/usr/bin/env bash
# Installs the Debian packages that the given groups of work need, asking apt only for those that are
# missing: scripts/setup.sh build|demo|test|arm64|... ...
# With --optional, packages that cannot be installed give a message and exit status 3, not a failure.
set -euo pipefail

packages_of() {
  case "$1" in
    build) echo g++ cmake ninja-build pkg-config libcli11-dev nlohmann-json3-dev libpng-dev \
      libjpeg62-turbo-dev libtiff-dev libexif-dev ;;
    demo) echo lomiri-wallpapers-16.04 ghostscript ;;
    docs) echo doxygen python3 python3-markdown python3-pygments ;;
    test) echo libgtest-dev clang libclang-rt-14-dev clang-format doxygen git python3 \
      python3-markdown python3-pygments dpkg-dev file \
      fp-compiler mono-mcs mono-runtime libmono-system-core4.0-cil ;;
    arm64) echo g++-aarch64-linux-gnu qemu-user googletest ;;
    x86-32) echo g++-i686-linux-gnu googletest ;;
    wasm) echo clang llvm lld wasi-libc libclang-rt-14-dev-wasm32 libc++-14-dev-wasm32 \
      libc++abi-14-dev-wasm32 nodejs googletest ;;
    windows32) echo g++-mingw-w64-i686-posix googletest python3 ;;
    windows) echo g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth python3 ;;
    python) echo python3 python3-build python3-setuptools python3-wheel python3-pytest \
      python3-numpy python3-pil python3-distributed mypy ;;
    # Node.js packages from elsewhere than Debian contain npm.
    web) echo nodejs "$(command -v npm >/dev/null || echo npm)" chromium fonts-dejavu-core python3 ;;
    package) echo dpkg-dev file lintian git ;;
    fuzz) echo clang libclang-rt-14-dev ;;
    bench) echo libopencv-dev libleptonica-dev libfreeimage-dev ;;
    quality) echo lomiri-wallpapers-16.04 ;;
    format) echo clang-format git ;;
    *) echo "setup.sh: unknown group '$1'" >&2; exit 2 ;;
  esac
}

optional=no
if [ "${1:-}" = --optional ]; then optional=yes; shift; fi

missing=()
for group in "$@"; do
  for package in $(packages_of "$group"); do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
  done
done
[ ${#missing[@]} -gt 0 ] || exit 0

give_up() {
  echo "setup.sh: $1; needed are: ${missing[*]}" >&2
  [ $optional = yes ] && exit 3
  exit 1
}

command -v apt-get >/dev/null || give_up "apt-get is not here"
as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || give_up "installing packages needs root or sudo"
  as_root=(sudo)
fi
install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q
  --no-install-recommends)
echo "Installing: ${missing[*]}"
# The package lists may be missing or old: fetch them when the first try fails.
"${install[@]}" "${missing[@]}" >/dev/null 2>&1 ||
  { "${as_root[@]}" apt-get update -q >/dev/null && "${install[@]}" "${missing[@]}" >/dev/null; } ||
  give_up "apt-get failed"
