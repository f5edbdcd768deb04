// SPDX-License-Identifier: MIT
#include <cstdio>
#include <exception>

#include "platform/terminal.h"
#include "txsub/commands/commands.h"
#include "txsub/console.h"
#include "txsub/options/options.h"
#include "util/exception.h"

namespace {

using namespace korr;

void openLogs(const txsub::InputOptions& options, txsub::Console& console) {
  try {
    console.openLogs(options.logs, options.logLevel);
  } catch (const util::TessaryException& error) {
    throw txsub::UsageError(error.what());
  }
}

int runCommand(const txsub::Command& command, txsub::Console& console) {
  try {
    return std::visit(
        [&console](const auto& options) -> int {
          console.setVerbosity(options.input.verbosity);
          openLogs(options.input, console);
          return txsub::run(options, console);
        },
        command);
  } catch (const txsub::UsageError& error) {
    console.error(error.what());
    return txsub::kUsage;
  } catch (const util::TessaryException& error) {
    console.error(error.what());
  } catch (const std::bad_alloc&) {
    console.error("there is not enough memory for this");
  } catch (const std::exception& error) {
    console.error(error.what());
  }
  return txsub::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  const auto parsed = txsub::parseCommandLine(platform::utf8Arguments(argc, argv));
  if (const auto* nothing = std::get_if<txsub::NoCommand>(&parsed)) {
    const bool isResult = nothing->exitCode == txsub::kDone;
    std::fputs(nothing->text.c_str(), isResult ? stdout : stderr);
    return nothing->exitCode;
  }
  platform::catchInterrupts();
  txsub::Console console;
  const int exitCode = runCommand(std::get<txsub::Command>(parsed), console);
  if (platform::isInterrupted()) {
    console.note(exitCode == txsub::kDone ? "interrupted; the output is complete up to here"
                                          : "interrupted");
  }
  return exitCode;
}
