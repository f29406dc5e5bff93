#!/usr/bin/env bash
# Checks vetra as users consume it: installs a build into a staging prefix,
# builds the consumer project under tests/consumer/ against it both through
# the CMake package and through pkg-config and runs both, then makes the
# Debian package with cpack and checks its file list in a scratch root.
# Usage: tools/test-install.sh [work-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh pkg-config dpkg-dev file
work=$(realpath -m "${1:-build-install}")
rm -rf "$work"
mkdir -p "$work"

echo "== library and command, configured for /usr, installed into a staging prefix"
cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DVETRA_BUILD_TESTS=OFF -DVETRA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$work/build" -j"$(nproc)" --target vetra vetra_cli | tail -n 1
stage=$work/stage
cmake --install "$work/build" --prefix "$stage" >/dev/null
libdir=$(find "$stage" -name 'libvetra.so' -printf '%h\n')

echo "== consumer through find_package(vetra CONFIG)"
cmake -S tests/consumer -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$work/consumer" | tail -n 1
LD_LIBRARY_PATH=$libdir "$work/consumer/consumer"

echo "== consumer through pkg-config"
export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2046
g++ -std=c++17 tests/consumer/consumer.cpp -o "$work/consumer-pc" $(pkg-config --cflags --libs vetra) \
  -Wl,-rpath,"$(pkg-config --variable=libdir vetra)"
"$work/consumer-pc"

echo "== the installed command finds its library"
"$stage/bin/vetra" --version

echo "== Debian package"
(cd "$work/build" && cpack -G DEB >/dev/null)
deb=$(ls "$work"/build/vetra_*.deb)
dpkg-deb --info "$deb" | grep -E "Package|Version|Depends|Architecture"
root=$work/root
dpkg-deb -x "$deb" "$root"
listed=$(cd "$root" && find . -type f -o -type l | sed 's|^\./|/|' | sort)
echo "$listed"
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || echo x86_64-linux-gnu)
for want in /usr/bin/vetra /usr/include/vetra/vetra.h /usr/lib/$multiarch/libvetra.so \
  /usr/lib/$multiarch/libvetra.so.0 /usr/lib/$multiarch/pkgconfig/vetra.pc \
  /usr/lib/$multiarch/cmake/vetra/vetraConfig.cmake; do
  grep -qx "$want" <<<"$listed" || { echo "test-install: $want missing from the package"; exit 1; }
done
if grep -v -E '^/usr/(bin|include|lib|share)/' <<<"$listed"; then
  echo "test-install: files outside /usr in the package"
  exit 1
fi
"$root/usr/bin/vetra" --version
echo "test-install: all good"
