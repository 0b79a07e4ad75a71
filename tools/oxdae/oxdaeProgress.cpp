#include "oxdaeProgress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace oxdae {

namespace {

constexpr uintmax_t kLargeFile = uintmax_t{64} << 20;
constexpr double kMegabyte = 1e6;
// The rate of a load faster than this is taken over this time, which keeps
// the division defined.
constexpr double kShortestSeconds = 1e-3;

bool g_forced = false;
bool g_lineOpen = false;

}  // namespace

void AddProgressFlag(CLI::App& command) {
  command.add_flag("--progress", g_forced,
                   "show a progress bar on standard error while the document loads");
}

void EndProgressLine() {
  if (!g_lineOpen) return;
  std::fputc('\n', stderr);
  g_lineOpen = false;
}

ProgressBar::ProgressBar(const std::string& file)
    : m_file(file), m_start(std::chrono::steady_clock::now()) {
  std::error_code error;
  const uintmax_t bytes = std::filesystem::file_size(file, error);
  if (!error) m_bytes = bytes;
  m_terminal = isatty(fileno(stderr)) != 0;
  m_shown = g_forced || (m_terminal && m_bytes > kLargeFile);
  m_progress.onProgress = [this](double fraction) { Show(fraction); };
}

ProgressBar::~ProgressBar() {
  EndProgressLine();
}

void ProgressBar::Show(double fraction) {
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
  const double megabytes = fraction * static_cast<double>(m_bytes) / kMegabyte;
  const double rate = megabytes / std::max(seconds, kShortestSeconds);
  const int percent = static_cast<int>(fraction * 100.0);
  std::fprintf(stderr, "%soxdae: reading %s: %3d%% %.1f MB %.1f MB/s%s", m_terminal ? "\r" : "",
               m_file.c_str(), percent, megabytes, rate, m_terminal ? "   " : "\n");
  std::fflush(stderr);
  g_lineOpen = m_terminal;
}

}  // namespace oxdae
