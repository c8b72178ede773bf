#include "core/ProgressBar.h"

#include <cmath>

namespace {

std::string formatDuration(double seconds) {
  if (!(seconds >= 0) || seconds > 359999) return "--:--";
  const long s = long(seconds + 0.5);
  char buffer[32];
  if (s >= 3600)
    snprintf(buffer, sizeof buffer, "%ld:%02ld:%02ld", s / 3600, (s / 60) % 60, s % 60);
  else
    snprintf(buffer, sizeof buffer, "%ld:%02ld", s / 60, s % 60);
  return buffer;
}

}  // namespace

std::string formatProgress(uint32_t done, uint32_t total, double framesPerSecond, int barWidth) {
  if (done > total) done = total;
  const double fraction = total > 0 ? double(done) / double(total) : 1.0;
  std::string line = "video ";
  if (barWidth > 0) {
    const int filled = int(fraction * barWidth);
    line += "[" + std::string(size_t(filled), '#') + std::string(size_t(barWidth - filled), '.') + "] ";
  }
  const double left = framesPerSecond > 0 ? double(total - done) / framesPerSecond : -1.0;
  char buffer[160];
  snprintf(buffer, sizeof buffer, "%u/%u frames %5.1f%% %6.1f fps %s left", done, total, fraction * 100.0,
           framesPerSecond, formatDuration(left).c_str());
  return line + buffer;
}

ProgressBar::ProgressBar(FILE* stream_, bool terminal_, uint32_t total_, double plainIntervalSeconds_)
    : stream(stream_),
      terminal(terminal_),
      total(total_),
      plainIntervalSeconds(plainIntervalSeconds_),
      started(std::chrono::steady_clock::now()),
      lastDrawn(started) {}

void ProgressBar::update(uint32_t done) {
  const auto now = std::chrono::steady_clock::now();
  const double since = std::chrono::duration<double>(now - lastDrawn).count();
  // A terminal is redrawn a few times a second, a log every interval.
  if (anyDrawn && since < (terminal ? 0.2 : plainIntervalSeconds)) return;
  if (!anyDrawn && !terminal && since < plainIntervalSeconds) return;
  lastDrawn = now;
  draw(done);
}

void ProgressBar::finish(uint32_t done) {
  // A log does not need the same line twice.
  if (terminal || !anyDrawn || lastDone != done) draw(done);
  if (terminal) fputc('\n', stream);
  fflush(stream);
}

void ProgressBar::draw(uint32_t done) {
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  const double fps = seconds > 0 && done > 0 ? done / seconds : 0.0;
  anyDrawn = true;
  lastDone = done;
  if (terminal)
    fprintf(stream, "\r%s\x1b[K", formatProgress(done, total, fps, 24).c_str());  // \x1b[K clears the rest
  else
    fprintf(stream, "%s\n", formatProgress(done, total, fps, 0).c_str());
  fflush(stream);
}
