#!/usr/bin/env bash
# Times chromaxis-cli's Mandelbrot renders at 1024x1024 against XaoS (Debian package xaos, installed
# here when missing) on the same two views with 5000 iterations:
#   preset  the first Mandelbrot preset: centre (-0.12784, 0.842), 0.0005 wide (zoom 6000)
#   whole   the whole set: centre (-0.5, 0), 3 wide (zoom 1)
# XaoS renders each view from a .xaf file with -alwaysrecalc, so it computes every pixel instead
# of reusing an earlier frame; it skips the inside of the set by detecting periodic orbits, as our
# evaluator does. Targets: the preset at most 1.0x XaoS's time, the whole set at most 2x.
#
#   bench/compare-xaos.sh
#
# Environment:
#   CHROMAXIS_CLI    the command-line program (default: build/src/cli/chromaxis-cli)
#   BENCH_GENERATORS the benchmark, timed instead when the program has no "generate" command
#                    (default: build/bench/bench_generators)
#   XAOS             XaoS (default: from PATH)
#   RUNS             runs of each command; the fastest counts (default 3)
# The OpenGL renders run under xvfb-run (llvmpipe without a graphics card).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cli=${CHROMAXIS_CLI:-$root/build/src/cli/chromaxis-cli}
bench=${BENCH_GENERATORS:-$root/build/bench/bench_generators}
runs=${RUNS:-3}

xaos=${XAOS:-xaos}
if ! command -v "$xaos" > /dev/null; then
    echo "installing xaos"
    DEBIAN_FRONTEND=noninteractive apt-get install -y xaos > /dev/null
    xaos=xaos
fi
for tool in bc /usr/bin/time xvfb-run; do
    if ! command -v "$tool" > /dev/null; then
        echo "$0: $tool not found" >&2
        exit 1
    fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The views: name, centre x, centre y, width (= height), and our settings.
declare -A xaf settings
xaf[preset]="(initstate) (formula 'mandel) (maxiter 5000) (view -0.12784 0.842 0.0005 0.0005)"
settings[preset]="--set iterations=5000 --set norm=1000 --set xoff=-0.37216 --set yoff=-0.842 --set zoom=6000"
xaf[whole]="(initstate) (formula 'mandel) (maxiter 5000) (view -0.5 0 3 3)"
settings[whole]="--set iterations=5000 --set norm=60 --set xoff=0 --set yoff=0 --set zoom=1"

# fastest COMMAND...: the fastest wall time of $runs runs, in seconds.
fastest() {
    local best=""
    for ((i = 0; i < runs; i++)); do
        /usr/bin/time -f '%e' -o "$work/time" "$@" > "$work/out" 2>&1 || {
            echo "failed: $*" >&2
            cat "$work/out" >&2
            exit 1
        }
        local t
        t=$(tail -n 1 "$work/time")
        if [[ -z $best ]] || (($(echo "$t < $best" | bc))); then
            best=$t
        fi
    done
    echo "$best"
}

has_generate=0
if [[ -x $cli ]] && "$cli" generate mandelbrot "$work/probe.npy" --size 8x8 --renderer cpu > /dev/null 2>&1 &&
    [[ -s $work/probe.npy ]]; then
    has_generate=1
fi

echo "1024x1024, 5000 iterations, fastest of $runs runs"
printf '%-8s %10s %10s %10s %12s %12s\n' view "xaos s" "cpu s" "gl s" "cpu/xaos" "gl/xaos"
for view in preset whole; do
    echo "${xaf[$view]}" > "$work/$view.xaf"
    x=$(cd "$work" && fastest env QT_QPA_PLATFORM=offscreen "$xaos" -render "$view.xaf" -size 1024x1024 -alwaysrecalc)
    if ((has_generate)); then
        # shellcheck disable=SC2086
        c=$(fastest "$cli" generate mandelbrot "$work/out.npy" --size 1024x1024 ${settings[$view]} --renderer cpu)
        # shellcheck disable=SC2086
        g=$(fastest xvfb-run -a -s "-screen 0 1600x1200x24" "$cli" generate mandelbrot "$work/out.npy" \
            --size 1024x1024 ${settings[$view]} --renderer gl)
    else
        # The benchmark's own figures for the same renders, in seconds.
        index=$([[ $view == preset ]] && echo 0 || echo 2)
        xvfb-run -a -s "-screen 0 1600x1200x24" "$bench" --benchmark_filter="BM_(CpuEvaluator|OpenGl)/$index/" \
            --benchmark_format=csv > "$work/bench.csv" 2> /dev/null
        c=$(grep CpuEvaluator "$work/bench.csv" | cut -d, -f3 | awk '{ printf "%.3f", $1 / 1000 }')
        g=$(grep OpenGl "$work/bench.csv" | cut -d, -f3 | awk '{ printf "%.3f", $1 / 1000 }')
    fi
    printf '%-8s %10s %10s %10s %12s %12s\n' "$view" "$x" "$c" "$g" \
        "$(echo "scale=3; $c / $x" | bc)" "$(echo "scale=3; $g / $x" | bc)"
done
if ((!has_generate)); then
    echo "(chromaxis-cli has no generate command: the cpu and gl columns are the benchmark's render times)"
fi
