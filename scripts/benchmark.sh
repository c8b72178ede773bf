#!/usr/bin/env bash
# Benchmark: builds (as the play command does), then renders a stretch of
# every scheduled scene on the fixed clock at each size and prints the
# program's figures: time from process start to the first frame, peak
# memory, and a table with a row per scene (and one for a frame without
# scenes, "(none)"): frames per second (mean),
# slowest frame, the mean milliseconds of each pass of the frame (measured
# with the renderer drained between passes), and per frame the draw calls,
# triangles and pixels copied from the framebuffer into textures; then the
# cost of --video: the mean frames per second of one stretch rendered plain
# and rendered into a video file (with the music).
#
#   bash scripts/benchmark.sh                 # 640x360 and 1280x720
#   bash scripts/benchmark.sh 800x450         # sizes of your choice
#   SECONDS_PER_SCENE=5 bash scripts/benchmark.sh
#   SKIP_BUILD=1 SKIP_VIDEO=1 bash scripts/benchmark.sh 640x360
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
# The tables: one row per "benchmark: scene" group of lines; the pass
# columns hold wall-clock milliseconds (what=pass-ms) or processor
# milliseconds of all the program's threads (what=pass-cpu-ms), which a
# busy machine disturbs less.
table() {
  awk -v what="$1" '
    $2 == "scene" && $4 == "frames" { name = $3; fps[name] = $7; slow[name] = $9;
                                       if (!(name in seen)) { seen[name] = 1; order[++n] = name } }
    $2 == "scene" && $4 == what { for (i = 5; i < NF; i += 2) { ms[name, $i] = $(i + 1); pass[(i - 3) / 2] = $i }
                                  passes = (NF - 4) / 2 }
    $2 == "scene" && $4 == "per-frame" { draws[name] = $6; tris[name] = $8; pixels[name] = $10 }
    END {
      printf "  %-16s %6s %7s", "scene", "fps", "slowest";
      for (p = 1; p <= passes; ++p) printf " %11s", pass[p];
      printf " %8s %6s %8s %9s\n", "sum", "draws", "tris", "copied";
      for (k = 1; k <= n; ++k) {
        s = order[k]; sum = 0;
        printf "  %-16s %6.1f %7.1f", s, fps[s], slow[s];
        for (p = 1; p <= passes; ++p) { printf " %11.2f", ms[s, pass[p]]; sum += ms[s, pass[p]] }
        printf " %8.1f %6d %8d %9d\n", sum, draws[s], tris[s], pixels[s];
      }
    }'
}
for size in "${sizes[@]}"; do
  echo "size $size"
  first=1
  # The frame without scenes first: composition, present, grain, swap.
  all="$(OSTRAVINE_BENCHMARK_EMPTY=1 run ./ostravine -nomusic --windowed --size "$size" --fixed-fps 25 \
        --benchmark --from 0 --to "$per_scene_ms" 2>&1 | grep '^benchmark: scene ')"$'\n'
  for start in "${starts[@]}"; do
    out=$(run ./ostravine -nomusic --windowed --size "$size" --fixed-fps 25 --benchmark \
          --from "$start" --to $((start + per_scene_ms)) 2>&1 | grep '^benchmark:')
    if [ $first = 1 ]; then
      echo "$out" | grep startup-to-first-frame | sed "s/^/  /"
      first=0
    fi
    echo "$out" | grep peak-memory | sed "s/^/  at ${start} ms: /"
    all+="$(echo "$out" | grep ' scene ')"$'\n'
  done
  # The opening once more with the slot storage made on first use.
  lazy=$(run ./ostravine -nomusic --windowed --size "$size" --fixed-fps 25 --benchmark --lazy-targets \
         --from 0 --to "$per_scene_ms" 2>&1 | grep '^benchmark:')
  echo "$lazy" | grep -E 'startup-to-first-frame|peak-memory' | sed "s/^/  at 0 ms with --lazy-targets: /"
  echo "  per scene, wall-clock ms per frame of each pass (draws, tris, copied: per frame)"
  echo "$all" | table pass-ms
  echo "  per scene, processor ms per frame of each pass (all threads)"
  echo "$all" | table pass-cpu-ms
  [ "${SKIP_VIDEO:-0}" = 1 ] && continue
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
