// SPDX-License-Identifier: MIT

// Delivered buffers as lines of JSON.
#pragma once

#include <memory>
#include <string>

#include "files/output_file.h"
#include "model/output_sink.h"

namespace korr::txsub {

/// Hands out buffers of the filter's size and records what is delivered in them, exactly as the
/// filter's output pin would pass it on. Holds the lines back until a file is opened for them.
class SampleRecorder final : public encoding::subtitling::IOutputSink {
 public:
  static constexpr std::size_t kBufferSize = 1024;  ///< bytes

  /// Writes what was held and everything from now on to `path`.
  void open(const std::string& path);

  /// Lets readers of a pipe see what was delivered.
  void flush();

  /// Closes the file under its name.
  void commit();

  std::unique_ptr<encoding::subtitling::IOutputBuffer> getBuffer() override;
  void deliver(std::unique_ptr<encoding::subtitling::IOutputBuffer> buffer) override;
  void endOfStream() override;

 private:
  void write(const std::string& line);

  std::string held_;
  std::unique_ptr<OutputFile> file_;
};

}  // namespace korr::txsub
