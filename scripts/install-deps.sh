#!/usr/bin/env bash
# Installs the Debian packages Tallowmere needs, only those missing.
#   scripts/install-deps.sh run    what building and running the program needs
#   scripts/install-deps.sh test   that, plus what the tests and benchmarks need
set -euo pipefail

run_packages=(
  cmake ninja-build g++ pkg-config ccache
  qt6-base-dev qt6-svg-dev libgl-dev libegl-dev
  libsqlite3-dev nlohmann-json3-dev libpulse-dev libssl-dev
  procps unzip dbus hwdata pkexec
)
test_packages=(
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  python3 python3-dbusmock python3-dbus python3-gi dbus-daemon
  curl zip sqlite3 iproute2 wrk prometheus locales
  pulseaudio pulseaudio-utils
)

packages=("${run_packages[@]}")
if [[ "${1:-run}" == test ]]; then
  packages+=("${test_packages[@]}")
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
