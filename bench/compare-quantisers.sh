#!/usr/bin/env bash
# Times chromaxis-cli's quantiser end to end (PNG in, indexed PNG out) against pngquant and
# ImageMagick on one photograph, and prints each result's PSNR against the input.
#
#   bench/compare-quantisers.sh IMAGE
#
# IMAGE should be a photograph of at least 8 megapixels in any format ImageMagick reads (a
# camera's 3264x2448 JPEG, say); it is converted to a PNG once and every tool reads that PNG.
# Without a photograph at hand, a noisy plasma of that size is a harder stand-in (it has far more
# distinct colours than a photograph):
#   convert -seed 11 -size 3264x2448 plasma:fractal -blur 0x1.5 -attenuate 0.3 +noise Gaussian photo.jpg
# The peer tools are Debian's: apt-get install pngquant imagemagick. Environment:
#   CHROMAXIS_CLI  the command-line program (default: build/src/cli/chromaxis-cli)
#   CONVERT, COMPARE, IDENTIFY, PNGQUANT  the peer tools (default: from PATH)
#   RUNS           runs per tool; the fastest counts, memory is the largest peak (default 3)
# Targets for Wu with error diffusion: at most 0.8x pngquant's time and 0.4x ImageMagick's, and a
# peak memory of at most 1.5x pngquant's.
set -euo pipefail

if [[ $# -ne 1 || ! -f $1 ]]; then
    echo "usage: $0 IMAGE" >&2
    exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
cli=${CHROMAXIS_CLI:-$root/build/src/cli/chromaxis-cli}
convert=${CONVERT:-convert}
compare=${COMPARE:-compare}
identify=${IDENTIFY:-identify}
pngquant=${PNGQUANT:-pngquant}
runs=${RUNS:-3}
for tool in "$cli" "$convert" "$compare" "$identify" "$pngquant" bc /usr/bin/time; do
    if ! command -v "$tool" > /dev/null; then
        echo "$0: $tool not found" >&2
        exit 1
    fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
input=$work/input.png
"$convert" "$1" -strip "$input"
echo "input: $1 ($("$identify" -format '%wx%h' "$input")), $runs runs each, the fastest counted"
echo

# measure NAME OUTPUT COMMAND...: fastest wall time, its CPU time and the largest peak memory.
declare -A wall cpu rss psnr
measure() {
    local name=$1 output=$2
    shift 2
    local best="" bestcpu="" peak=0
    for ((i = 0; i < runs; i++)); do
        rm -f "$output"
        /usr/bin/time -f '%e %U %S %M' -o "$work/time" "$@" > /dev/null 2> "$work/err" || {
            echo "$name failed:" >&2
            cat "$work/err" >&2
            exit 1
        }
        read -r e u s m < "$work/time"
        local c
        c=$(echo "$u + $s" | bc)
        if [[ -z $best ]] || (($(echo "$e < $best" | bc))); then
            best=$e
            bestcpu=$c
        fi
        ((m > peak)) && peak=$m
    done
    wall[$name]=$best
    cpu[$name]=$bestcpu
    rss[$name]=$peak
    psnr[$name]=$("$compare" -metric PSNR "$input" "$output" null: 2>&1 | cut -d' ' -f1 || true)
    printf '%-28s %7.2f s wall %7.2f s cpu %8d KiB  PSNR %s\n' "$name" "$best" "$bestcpu" "$peak" "${psnr[$name]}"
}

measure pngquant "$work/pq.png" "$pngquant" --speed 10 256 --force --output "$work/pq.png" "$input"
measure imagemagick "$work/im.png" "$convert" "$input" -dither FloydSteinberg -colors 256 "$work/im.png"

kernels=(nearest atkinson burkes floyd-steinberg jarvis sierra-2row sierra sierra-lite stucki)
for dither in 1 2 3 4 5 6 7 8 0; do
    measure "wu+${kernels[$dither]}" "$work/cx.png" "$cli" image quantise "$input" "$work/cx.png" \
        --set palette=3 --set method=2 --set colors=256 --set dither=$dither
done
measure "mediancut+nearest" "$work/cx.png" "$cli" image quantise "$input" "$work/cx.png" \
    --set palette=3 --set method=0 --set colors=256 --set dither=0

echo
printf '%-28s %10s %10s %12s %12s\n' run "/pngquant" "/magick" "cpu/pngquant" "mem/pngquant"
met=yes
for name in $(printf '%s\n' "${!wall[@]}" | sort); do
    [[ $name == pngquant || $name == imagemagick ]] && continue
    rp=$(echo "scale=2; ${wall[$name]} / ${wall[pngquant]}" | bc)
    ri=$(echo "scale=2; ${wall[$name]} / ${wall[imagemagick]}" | bc)
    rc=$(echo "scale=2; ${cpu[$name]} / ${cpu[pngquant]}" | bc)
    rm=$(echo "scale=2; ${rss[$name]} / ${rss[pngquant]}" | bc)
    printf '%-28s %9sx %9sx %11sx %11sx\n' "$name" "$rp" "$ri" "$rc" "$rm"
    if [[ $name == wu+* && $name != wu+nearest ]] && (($(echo "$rp > 0.8 || $ri > 0.4 || $rm > 1.5" | bc))); then
        met=no
    fi
done
echo
echo "targets for Wu with error diffusion (<= 0.8x pngquant, <= 0.4x ImageMagick, <= 1.5x pngquant's memory): met: $met"
