// The progress bar of oxdae: one line on standard error while a document
// loads, "oxdae: reading FILE: P% M MB R MB/s" (M the megabytes of the file
// read so far, R the rate since the command began reading; 1 MB is 10^6
// bytes). It is shown when standard error is a terminal and the file is
// larger than 64 MB, or always with --progress. On a terminal the line is
// rewritten in place; elsewhere each update is a line of its own. Standard
// output never carries it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include <oxKernel/oxProgress.h>
#include <CLI/CLI.hpp>

namespace oxdae {

// Adds "--progress" (show the bar whatever the file's size) to `command`.
void AddProgressFlag(CLI::App& command);

// Ends the bar's line when one is open on a terminal, so that the next text
// on standard error starts on a line of its own.
void EndProgressLine();

// The bar of one load of `file`; GetProgress is null when no bar is wanted.
class ProgressBar {
 public:
  explicit ProgressBar(const std::string& file);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  OxKernel::oxProgress* GetProgress() { return m_shown ? &m_progress : nullptr; }

 private:
  void Show(double fraction);

  std::string m_file;
  uintmax_t m_bytes = 0;
  bool m_shown = false;
  bool m_terminal = false;
  std::chrono::steady_clock::time_point m_start;
  OxKernel::oxProgress m_progress;
};

}  // namespace oxdae
