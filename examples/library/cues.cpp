// SPDX-License-Identifier: MIT
// Writes the cues of a live transport stream as WebVTT:  dvblast ... | cues CC1 live.vtt
#include <txsub/txsub.h>

#include <array>
#include <cstdio>
#include <memory>

struct Close {
  void operator()(txsub_input* input) const { txsub_close(&input); }
  void operator()(txsub_writer* writer) const { txsub_writer_close(&writer); }
};

int main(int argc, char** argv) {
  if (argc != 3) return std::fputs("usage: cues PAGE FILE.vtt < STREAM\n", stderr), 2;
  txsub_options options = TXSUB_OPTIONS_INIT;
  options.page = argv[1];
  const std::unique_ptr<txsub_input, Close> input(txsub_open_stream(&options));
  std::unique_ptr<txsub_writer, Close> writer;
  std::array<unsigned char, 7 * 188> bytes{};
  txsub_result result = TXSUB_MORE;
  while (result != TXSUB_END && result != TXSUB_FAILED) {
    const auto size = std::fread(bytes.data(), 1, bytes.size(), stdin);
    result = size == 0 ? txsub_end(input.get()) : txsub_push(input.get(), bytes.data(), size);
    const txsub_cue* cue = nullptr;
    while (result != TXSUB_FAILED && (result = txsub_next(input.get(), &cue)) == TXSUB_CUE) {
      if (!writer)
        writer.reset(txsub_writer_open(argv[2], txsub_service_at(input.get(), cue->service)));
      result = txsub_writer_add(writer.get(), cue);
      txsub_cue_free(&cue);
    }
  }
  if (writer && result == TXSUB_END && txsub_writer_finish(writer.get()) == TXSUB_OK) return 0;
  std::fprintf(stderr, "%s %s\n", txsub_error(input.get()), txsub_writer_error(writer.get()));
  return 1;
}
