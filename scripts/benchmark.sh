#!/usr/bin/env bash
# Benchmark: builds (as the play command does), then renders a stretch of
# every scheduled scene on the fixed clock at each size and prints the
# program's figures, one line each: time from process start to the first
# frame, frames per second (mean and slowest frame) per scene, peak memory;
# then the cost of --video: the mean frames per second of one stretch
# rendered plain and rendered into a video file (with the music).
#
#   bash scripts/benchmark.sh                 # 640x360 and 1280x720
#   bash scripts/benchmark.sh 800x450         # sizes of your choice
#   SECONDS_PER_SCENE=5 bash scripts/benchmark.sh
#
# Runs under Xvfb (Mesa's software renderer) unless DISPLAY is set.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${SKIP_BUILD:-0}" != 1 ]; then
  bash scripts/install-deps.sh
  bash scripts/build.sh
fi
sizes=("$@")
[ ${#sizes[@]} -eq 0 ] && sizes=(640x360 1280x720)
per_scene_ms=$(( ${SECONDS_PER_SCENE:-2} * 1000 ))
starts=(0 26500 44800 75000 101000 120000 135000 165000 187300 217500 232500)
cd build/run
run() {
  if [ -n "${DISPLAY:-}" ]; then "$@"; else xvfb-run -a -s "-screen 0 1920x1200x24 -noreset" "$@"; fi
}
for size in "${sizes[@]}"; do
  echo "size $size"
  first=1
  for start in "${starts[@]}"; do
    out=$(run ./ostravine -nomusic --windowed --size "$size" --fixed-fps 25 --benchmark \
          --from "$start" --to $((start + per_scene_ms)) 2>&1 | grep '^benchmark:')
    if [ $first = 1 ]; then
      echo "$out" | grep startup-to-first-frame | sed "s/^/  /"
      first=0
    fi
    echo "$out" | grep ' scene ' | sed "s/^/  /"
    echo "$out" | grep peak-memory | sed "s/^/  at ${start} ms: /"
  done
  # The same stretch without and with capture to a video file.
  from=135000
  to=$((from + 3 * per_scene_ms))
  video_file=$(mktemp -u /tmp/ostravine-benchmark-XXXXXX.mp4)
  fps() { grep '^benchmark: all frames' | sed 's/.*mean-fps \([0-9.]*\).*/\1/'; }
  plain=$(run ./ostravine -nomusic --windowed --size "$size" --fixed-fps 25 --benchmark \
          --from $from --to $to 2>&1 | fps)
  video=$(run ./ostravine --windowed --size "$size" --fixed-fps 25 --benchmark \
          --from $from --to $to --video "$video_file" 2>&1 | fps)
  rm -f "$video_file"
  echo "  video capture $from..$to ms: plain $plain fps, with --video $video fps" \
       "($(awk -v p="$plain" -v v="$video" 'BEGIN { printf "%+.1f%%", (p > 0 ? (v / p - 1) * 100 : 0) }'))"
done
