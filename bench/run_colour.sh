#!/usr/bin/env bash
# Colour-managed 24-megapixel JPEGs: the sRGB step beside the decode it follows. The corpus
# photos get an Adobe RGB profile (an APP2 segment added, pixels untouched); Tallowbrook's
# screen-sized decode, its conversion, and the full-size decode and conversion for contrast;
# the same photos without a profile (what looking for one costs); and jpgicc (full decode,
# Little CMS transform, encode) on the same files in the same run. Prints each figure and the
# ratios. Usage: bench/run_colour.sh [count]   (corpus in $CORPUS_DIR, default /tmp/tallowbrook-corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
count=${1:-10}
source bench/bench_lib.sh
needBigPictures "$count" liblcms2-utils

buildBench colour_bench
bench=build-bench/bench/colour_bench
export QT_QPA_PLATFORM=offscreen
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$bench" --profile "$work/adobe.icc"
# The profile goes after the file's APP0/APP1 segments, where cameras put theirs.
/usr/bin/python3 - "$work/adobe.icc" "$work" "${files[@]}" <<'PY'
import os, struct, sys
icc = open(sys.argv[1], 'rb').read()
body = b'ICC_PROFILE\0\x01\x01' + icc
segment = b'\xff\xe2' + struct.pack('>H', len(body) + 2) + body
for path in sys.argv[3:]:
    data = open(path, 'rb').read()
    at = 2
    while data[at] == 0xFF and 0xE0 <= data[at + 1] <= 0xE1:
        at += 2 + struct.unpack('>H', data[at + 2:at + 4])[0]
    with open(os.path.join(sys.argv[2], 'adobe_' + os.path.basename(path)), 'wb') as out:
        out.write(data[:at] + segment + data[at:])
PY
tagged=("$work"/adobe_*.jpg)

# Warm the page cache so every tool reads the files from memory.
cat "${files[@]}" "${tagged[@]}" >/dev/null

field() { sed -E "s/.* $1=([0-9.]+).*/\1/"; }
ours=$("$bench" "${tagged[@]}")
plain=$("$bench" "${files[@]}")
[ "$(echo " $ours" | field converted)" = "${#tagged[@]}" ] || { echo "bench: the profile was not applied: $ours" >&2; exit 1; }
start=$(date +%s%N)
for f in "${tagged[@]}"; do jpgicc -q90 "$f" "$work/out.jpg" 2>/dev/null; done
end=$(date +%s%N)
jpgicc_ms=$(awk -v ns=$((end - start)) -v n=${#tagged[@]} 'BEGIN { printf "%.1f", ns / 1e6 / n }')

decode=$(echo " $ours" | field decode_ms)
convert=$(echo " $ours" | field convert_ms)
share=$(echo " $ours" | field share)
full_decode=$(echo " $ours" | field full_decode_ms)
full_convert=$(echo " $ours" | field full_convert_ms)
look=$(echo " $plain" | field convert_ms)
echo "colour, ${#tagged[@]} Adobe RGB photos of 24 MP:"
echo "  screen-sized decode (fit 1920x1080) ${decode} ms, its sRGB conversion ${convert} ms = ${share} % of the decode (target below 10 %)"
echo "  full-size decode ${full_decode} ms, full-size conversion ${full_convert} ms"
echo "  same photos without a profile: looking for one costs ${look} ms"
echo "  jpgicc (full decode + Little CMS + encode) ${jpgicc_ms} ms each"
awk -v a="$decode" -v b="$convert" -v c="$jpgicc_ms" -v d="$full_decode" -v e="$full_convert" 'BEGIN {
  printf "  ratio tallowbrook screen-sized decode+conversion / jpgicc %.2f; full-size decode+conversion / jpgicc %.2f (below 1 is faster)\n", (a + b) / c, (d + e) / c }'
