/* SPDX-License-Identifier: MIT */
/* Prints the cues of a recording:  cc cues.c $(pkg-config --cflags --libs txsub) -o cues */
#include <stdio.h>
#include <txsub/txsub.h>

static void warn(void* context, const char* message) {
  (void)context;
  fprintf(stderr, "warning: %s\n", message);
}

int main(int argc, char** argv) {
  txsub_options options = TXSUB_OPTIONS_INIT;
  options.warn = warn;
  options.page = argc > 2 ? argv[2] : NULL;
  txsub_input* input = txsub_open(argc > 1 ? argv[1] : NULL, &options);
  const txsub_cue* cue = NULL;
  txsub_result result;
  while ((result = txsub_next(input, &cue)) == TXSUB_CUE) {
    const txsub_service* service = txsub_service_at(input, cue->service);
    printf("%s %.3f %.3f\n%s\n", service->name, (double)cue->start_ns / 1e9,
           (double)cue->stop_ns / 1e9, cue->text);
    txsub_cue_free(&cue);
  }
  if (result == TXSUB_FAILED) fprintf(stderr, "error: %s\n", txsub_error(input));
  txsub_close(&input);
  return result == TXSUB_END ? 0 : 1;
}
