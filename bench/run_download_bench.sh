#!/bin/bash
# Compares download_bench with curl on loopback: one sparse file of SIZE_MB (default
# 1024) served by python's http.server from a temporary folder in /tmp, downloaded by
# curl to /dev/null, by download_bench to /dev/null and by download_bench to a file.
# Everything it creates is removed at the end.
#   bench/run_download_bench.sh [path/to/download_bench]
set -euo pipefail

bench=${1:-build/bench/download_bench}
size_mb=${SIZE_MB:-1024}
dir=$(mktemp -d /tmp/sk-download-bench.XXXXXX)
pid=
cleanup() {
    if [ -n "$pid" ]; then kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; fi
    rm -rf "$dir"
}
trap cleanup EXIT

truncate -s "${size_mb}M" "$dir/big.bin"
python3 -u -m http.server 0 --bind 127.0.0.1 --directory "$dir" >"$dir/server.out" 2>/dev/null &
pid=$!
port=
for _ in $(seq 100); do
    port=$(sed -n 's/.* port \([0-9]*\) .*/\1/p' "$dir/server.out" | head -n1)
    [ -n "$port" ] && break
    sleep 0.1
done
[ -n "$port" ] || { echo "http.server did not start" >&2; exit 1; }
url="http://127.0.0.1:$port/big.bin"

echo "== curl -> /dev/null"
if command -v curl >/dev/null; then
    curl -s -o /dev/null -w '%{size_download} bytes in %{time_total} s (%{speed_download} B/s)\n' "$url"
else
    echo "curl not installed"
fi
echo "== download_bench -> /dev/null"
/usr/bin/time -f 'max RSS %M KB, wall %e s' "$bench" "$url" /dev/null
echo "== download_bench -> file"
/usr/bin/time -f 'max RSS %M KB, wall %e s' "$bench" "$url" "$dir/out.bin"
cmp -n "$((size_mb * 1024 * 1024))" "$dir/out.bin" "$dir/big.bin" && echo "file identical"
echo "== curl -> file"
if command -v curl >/dev/null; then
    rm -f "$dir/out.bin"
    curl -s -o "$dir/out.bin" -w '%{size_download} bytes in %{time_total} s (%{speed_download} B/s)\n' "$url"
fi
