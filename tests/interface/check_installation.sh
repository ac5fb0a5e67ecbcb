#!/usr/bin/env bash
# Installs the tree into a prefix of its own and builds against it what people outside build: a C program by
# pkg-config, the same by find_package, and a transport plug-in both ways. Runs the programs and loads the plug-ins.
set -euo pipefail

build_dir=$1
lib_dir=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
export QVN_HOME=$work/home

cmake --install "$build_dir" --prefix "$prefix" >"$work/install.log"
if outside=$(sed -n 's/^-- \(Installing\|Up-to-date\): //p' "$work/install.log" | grep -v "^$prefix/"); then
  echo "installed outside of the prefix: $outside"
  exit 1
fi
[ -f "$prefix/etc/sane.d/dll.d/qvn" ] && [ -x "$prefix/lib/cups/backend/qvn" ]
echo "nothing outside of the prefix: ok"

export PKG_CONFIG_PATH=$prefix/$lib_dir/pkgconfig
read -r -a flags <<<"$(pkg-config --cflags --libs qvn)"
cc -std=c99 -pedantic -Wall -Werror -o "$work/client" "$here/installed/client.c" "${flags[@]}" \
  "-Wl,-rpath,$prefix/$lib_dir"
"$work/client"
echo "client by pkg-config: ok"

PYTHONPATH=$prefix/lib/python3/dist-packages QVN_LIBRARY=$prefix/$lib_dir/QR__serv.so.0 \
  python3 -B -c 'import qvn; print("Python module:", "ok" if qvn.Library().printers() == [] else "failed")' | grep ok

cmake -S "$here/installed" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure.log"
cmake --build "$work/build" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$work/build/client"
echo "client by find_package: ok"

# It exports its entry points and nothing that keeps it in a process for ever.
check_transport() {
  symbols=$(nm -D --defined-only "$1")
  grep -q ' T TransportGetInfo$' <<<"$symbols"
  if grep -v ' T Transport' <<<"$symbols"; then echo "exported by $1"; exit 1; fi
  if readelf -d "$1" | grep NODELETE; then echo "$1 cannot be unloaded"; exit 1; fi
  QVN_TRANSPORT_PATH=$(dirname "$1") "$prefix/bin/qvn" transport add "$(basename "$1")"
  "$prefix/bin/qvn" transport list --json | grep -q "\"name\": \"$2\""
  "$prefix/bin/qvn" transport remove "$2"
}
check_transport "$work/build/installed_transport.so" HBN1
echo "transport by find_package: ok"

read -r -a flags <<<"$(pkg-config --cflags --libs qvn-transport)"
mkdir "$work/by_pkg_config"
c++ -std=c++20 -shared -o "$work/by_pkg_config/by_pkg_config.so" "$here/installed/transport.cpp" "${flags[@]}" \
  -Wl,-z,defs
check_transport "$work/by_pkg_config/by_pkg_config.so" HBN1
echo "transport by pkg-config: ok"

"$prefix/bin/qvn" uninstall
"$prefix/bin/qvn" install
"$prefix/bin/qvn" transport list --json | grep -q '"module": "qvn_ipv4.so"'
"$prefix/bin/qvn" settings set 9200UnicastDiscoveryTimeout 20
("$prefix/bin/qvn" discover --transport IPv4 127.0.0.1 2>&1 || true) | grep -q "nothing answered at 127.0.0.1"
echo "registry script and installed transport: ok"
