#!/bin/bash
# Compares download_bench with curl on loopback. One sparse file of SIZE_MB (default
# 1024) is served by python's http.server from a temporary folder in /tmp; after one
# warm-up download, ROUNDS (default 5) rounds each download it with curl and with
# download_bench, in turn, first to /dev/null and then to a file; the medians are
# printed at the end. Everything it creates is removed when it ends.
#   bench/run_download_bench.sh [path/to/download_bench]
set -euo pipefail

bench=${1:-build/bench/download_bench}
size_mb=${SIZE_MB:-1024}
rounds=${ROUNDS:-5}
dir=$(mktemp -d /tmp/sk-download-bench.XXXXXX)
pid=
cleanup() {
    if [ -n "$pid" ]; then kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; fi
    rm -rf "$dir"
}
trap cleanup EXIT

command -v curl >/dev/null || { echo "curl is not installed: nothing to compare with" >&2; exit 1; }

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

now() { date +%s.%N; }
curl -s -o /dev/null "$url" # warm-up: the first read of the file is slower for any client

results="$dir/results.txt"
: >"$results"
for round in $(seq "$rounds"); do
    for target in /dev/null "$dir/out.bin"; do
        kind=null
        [ "$target" = /dev/null ] || kind=file
        rm -f "$dir/out.bin"
        t0=$(now); curl -s -o "$target" "$url"; t1=$(now)
        echo "curl $kind $t0 $t1" >>"$results"
        rm -f "$dir/out.bin"
        t0=$(now); /usr/bin/time -f '%M' -o "$dir/rss.txt" "$bench" "$url" "$target" >"$dir/bench.out"; t1=$(now)
        echo "bench $kind $t0 $t1 $(cat "$dir/rss.txt")" >>"$results"
        sed -n 's/timer lateness: worst \([0-9.]*\) ms, p99 \([0-9.]*\) ms.*/lateness \1 \2/p' "$dir/bench.out" >>"$results"
        if [ "$kind" = file ]; then
            cmp -s -n "$((size_mb * 1024 * 1024))" "$dir/out.bin" "$dir/big.bin" || echo "round $round: file differs!"
        fi
    done
done

python3 - "$results" "$size_mb" <<'PY'
import statistics, sys
rows = [line.split() for line in open(sys.argv[1])]
size = int(sys.argv[2]) * 1024 * 1024
def times(tool, kind):
    return [float(r[3]) - float(r[2]) for r in rows if r[0] == tool and r[1] == kind]
for kind, label in (("null", "to /dev/null"), ("file", "to a file")):
    c, b = times("curl", kind), times("bench", kind)
    ratios = [x / y for x, y in zip(c, b)]
    print(f"{label}: curl median {statistics.median(c):.3f} s ({size / statistics.median(c) / 1e6:.0f} MB/s), "
          f"download_bench median {statistics.median(b):.3f} s ({size / statistics.median(b) / 1e6:.0f} MB/s), "
          f"throughput bench/curl median {statistics.median(ratios):.2f} (range {min(ratios):.2f}-{max(ratios):.2f})")
late = [(float(r[1]), float(r[2])) for r in rows if r[0] == "lateness"]
rss = [int(r[4]) for r in rows if r[0] == "bench"]
print(f"10 ms timer lateness: worst {max(w for w, _ in late):.2f} ms, highest p99 {max(p for _, p in late):.2f} ms")
print(f"peak RSS of download_bench: {min(rss) / 1024:.1f}-{max(rss) / 1024:.1f} MB")
PY
