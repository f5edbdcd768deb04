/* SPDX-License-Identifier: MIT */

/* Subtitles of broadcast recordings: recordings, transport streams or samples in, timed cues and
 * files out.
 *
 * Every function may be called with null handles and in any order: what cannot be done is
 * TXSUB_FAILED, and txsub_error says why. Nothing is thrown. There is no global state: a handle is
 * used by one thread at a time, different handles by any. All texts are UTF-8. */
#ifndef TXSUB_TXSUB_H
#define TXSUB_TXSUB_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define TXSUB_API __attribute__((visibility("default")))
#else
#define TXSUB_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A recording or a stream that is being read. */
typedef struct txsub_input txsub_input;
/* A file that is being written. */
typedef struct txsub_writer txsub_writer;

typedef enum txsub_result {
  TXSUB_OK = 0,
  TXSUB_CUE = 1,     /* there is a cue */
  TXSUB_MORE = 2,    /* there is none yet: push more, or end the input */
  TXSUB_END = 3,     /* there is none any more */
  TXSUB_FAILED = -1, /* txsub_error says why */
} txsub_result;

typedef enum txsub_kind {
  TXSUB_TELETEXT = 0,      /* EN 300 706 */
  TXSUB_CAPTIONS = 1,      /* CEA-608 and CEA-708 */
  TXSUB_DVB_SUBTITLES = 2, /* EN 300 743 */
} txsub_kind;

/* Structures that you fill in begin with their size, so that they may grow; use the _INIT macros.
 * Those that you are given may get fields at their end. */
typedef struct txsub_options {
  size_t size;
  const char* page;     /* only this service: "CC1" to "CC4", "S1" to "S63", "888"; null: all */
  const char* language; /* only services of this language (ISO 639-2); null: all */
  uint32_t pid;         /* only the stream of this PID or track; 0: all */
  int keep_times;       /* not 0: the stream's own times, else 0 is where the recording starts */
  /* Is told of damage and what is done about it, within the calls that read; may be null. */
  void (*warn)(void* context, const char* message);
  void* context;
} txsub_options;
#define TXSUB_OPTIONS_INIT \
  { sizeof(txsub_options), NULL, NULL, 0, 0, NULL, NULL }

/* A subtitle service of an input. */
typedef struct txsub_service {
  txsub_kind kind;
  const char* name;     /* "CC1", "708 service 1", "page 888", "DVB subtitles" */
  const char* language; /* ISO 639-2; empty when nothing says it */
  uint32_t pid;         /* or track number; 0 where there is none */
  uint32_t program;     /* program_number; 0 where there is none */
  int hard_of_hearing;  /* not 0: for those who do not hear */
} txsub_service;

enum { TXSUB_ITALIC = 1, TXSUB_UNDERLINE = 2 };

/* Neighbouring letters of one style. */
typedef struct txsub_run {
  const char* text;
  uint32_t foreground; /* 0xRRGGBB */
  uint32_t background; /* 0xAARRGGBB; 0xFF000000 is opaque black */
  uint32_t style;      /* TXSUB_ITALIC, TXSUB_UNDERLINE */
} txsub_run;

/* One row. */
typedef struct txsub_line {
  const txsub_run* runs; /* in the order of reading */
  size_t run_count;
  double left; /* of its first cell: percent of the picture from its left edge */
  double top;  /* percent of the picture from its upper edge */
} txsub_line;

/* The part of the picture outside which nothing is seen. */
typedef struct txsub_picture {
  const uint8_t* rgba; /* rows from top to bottom, each of width * 4 bytes: R, G, B, A */
  uint32_t width;      /* pixels, as all that follows */
  uint32_t height;
  uint32_t x; /* of its upper left corner on the display */
  uint32_t y;
  uint32_t display_width;
  uint32_t display_height;
} txsub_picture;

/* What a service shows over an interval. Of text and picture there is one. */
typedef struct txsub_cue {
  size_t service;   /* for txsub_service_at */
  int64_t start_ns; /* nanoseconds */
  int64_t stop_ns;
  const char* text; /* its lines, with line feeds between; empty for a picture */
  const txsub_line* lines;
  size_t line_count;
  const txsub_picture* picture; /* null for text */
  const void* origin;           /* the library's own */
} txsub_cue;

/* The version of the library, as "1.1.0". */
TXSUB_API const char* txsub_version(void);

/* Opens a recording, told by its content: whatever the program of the same name reads. `options`
 * may be null. Null only when there is no memory; otherwise ask txsub_error. Close it. */
TXSUB_API txsub_input* txsub_open(const char* path, const txsub_options* options);

/* An MPEG transport stream whose bytes come by txsub_push. */
TXSUB_API txsub_input* txsub_open_stream(const txsub_options* options);

/* One subtitle stream whose samples come by txsub_push_sample. `descriptors` (may be null) are
 * those of the elementary stream as a PMT carries them. */
TXSUB_API txsub_input* txsub_open_samples(txsub_kind kind, const uint8_t* descriptors, size_t size,
                                          const txsub_options* options);

/* Takes the next bytes of a transport stream, any number. */
TXSUB_API txsub_result txsub_push(txsub_input* input, const uint8_t* bytes, size_t size);

/* Takes the next sample: a PES data field of teletext or DVB subtitles from its data_identifier on,
 * or the cc_data triplets of one picture in the order of presentation; with its presentation time.
 */
TXSUB_API txsub_result txsub_push_sample(txsub_input* input, const uint8_t* bytes, size_t size,
                                         int64_t time_ns);

/* No bytes or samples come any more; what only waited for them becomes cues. */
TXSUB_API txsub_result txsub_end(txsub_input* input);

/* TXSUB_CUE: `*cue` is the next cue of any service, the caller's own, to be freed. Cues of a
 * service come in order of time, each when its end is known. */
TXSUB_API txsub_result txsub_next(txsub_input* input, const txsub_cue** cue);

/* Frees a cue, whose input may have been closed before, and makes the pointer null. */
TXSUB_API void txsub_cue_free(const txsub_cue** cue);

/* The services found so far; there may be more with every cue. */
TXSUB_API size_t txsub_service_count(const txsub_input* input);

/* Null beyond the last one. Valid until the input is closed. */
TXSUB_API const txsub_service* txsub_service_at(const txsub_input* input, size_t index);

/* Why the last call failed; empty when it did not. Valid until the next call with this input. */
TXSUB_API const char* txsub_error(const txsub_input* input);

/* Closes an input and makes the handle null. */
TXSUB_API void txsub_close(txsub_input** input);

/* Begins a file for the cues of one service; by the extension of `path` WebVTT (.vtt), SRT (.srt)
 * or TTML
 * (.ttml, pictures too). Null only when there is no memory; otherwise ask txsub_writer_error. */
TXSUB_API txsub_writer* txsub_writer_open(const char* path, const txsub_service* service);

/* Adds a cue that an input gave, in the order in which it gave them; the cue stays the caller's. */
TXSUB_API txsub_result txsub_writer_add(txsub_writer* writer, const txsub_cue* cue);

/* Completes the file and gives it its name. A writer that is closed without it leaves no file. */
TXSUB_API txsub_result txsub_writer_finish(txsub_writer* writer);

/* Why the last call failed; empty when it did not. */
TXSUB_API const char* txsub_writer_error(const txsub_writer* writer);

/* Closes a writer and makes the handle null. */
TXSUB_API void txsub_writer_close(txsub_writer** writer);

#ifdef __cplusplus
}
#endif

#endif
