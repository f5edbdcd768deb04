// SPDX-License-Identifier: MIT

// The functions of the library: nothing is thrown across them.
#include "library/include/txsub/txsub.h"

#include <new>
#include <string>

#include "files/playable_file.h"
#include "library/input.h"
#include "util/exception.h"
#include "util/utf8_path.h"

using korr::txsub::CueRecord;
using korr::txsub::InputRequest;
using korr::txsub::LibraryInput;
using korr::util::TessaryException;

struct txsub_input {
  explicit txsub_input(InputRequest request) : input(std::move(request)) {}

  LibraryInput input;
  std::string error;
};

struct txsub_writer {
  std::unique_ptr<korr::txsub::IPlayableFile> file;  // null: never opened, or finished
  std::string error;
};

namespace {

// Runs `body`; what it throws becomes the handle's error.
template <class Handle, class Body>
txsub_result guarded(Handle* handle, Body body) noexcept {
  if (!handle) return TXSUB_FAILED;
  try {
    handle->error.clear();
    return body();
  } catch (const std::exception& error) {
    try {
      handle->error = error.what();
    } catch (...) {  // an empty error is better than none of it
    }
  } catch (...) {
    handle->error = "unknown";  // fits into the string itself
  }
  return TXSUB_FAILED;
}

// Fields that an older caller does not know keep their defaults.
txsub_options completed(const txsub_options* options) {
  txsub_options all = TXSUB_OPTIONS_INIT;
  if (!options) return all;
  const std::size_t size = std::min(options->size, sizeof all);
  std::copy_n(reinterpret_cast<const char*>(options), size, reinterpret_cast<char*>(&all));
  return all;
}

InputRequest requestOf(const txsub_options& options) {
  InputRequest request;
  if (options.language) request.language = options.language;
  if (options.pid != 0) request.pid = options.pid;
  request.keepsTimes = options.keep_times != 0;
  if (options.warn) {
    request.warn = [warn = options.warn, context = options.context](const std::string& message) {
      warn(context, message.c_str());
    };
  }
  return request;
}

// An input whose services are wanted by these options; `open` opens it. A wrong page is its error.
template <class Open>
txsub_input* opened(const txsub_options* given, Open open) noexcept {
  try {
    const txsub_options options = completed(given);
    InputRequest request = requestOf(options);
    std::string error;
    if (options.page) {
      request.query.page = korr::txsub::pageFromText(options.page);
      if (!request.query.page) {
        error = '\'' + std::string(options.page) + "' is neither a caption service nor a page";
      }
    }
    auto input = std::make_unique<txsub_input>(std::move(request));
    input->error = error;
    if (error.empty()) {
      guarded(input.get(), [&] {
        open(input->input);
        return TXSUB_OK;
      });
    }
    return input.release();
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace

const char* txsub_version(void) {
  return TESSARY_VERSION;
}

txsub_input* txsub_open(const char* path, const txsub_options* options) {
  return opened(options, [&](LibraryInput& input) {
    if (!path) throw TessaryException("there is no path");
    input.openFile(path);
  });
}

txsub_input* txsub_open_stream(const txsub_options* options) {
  return opened(options, [](LibraryInput& input) { input.openStream(); });
}

txsub_input* txsub_open_samples(txsub_kind kind, const uint8_t* descriptors, size_t size,
                                const txsub_options* options) {
  return opened(options, [&](LibraryInput& input) {
    if (!descriptors) size = 0;
    input.openSamples(korr::txsub::typeOf(kind), {descriptors, descriptors + size});
  });
}

txsub_result txsub_push(txsub_input* input, const uint8_t* bytes, size_t size) {
  return guarded(input, [&] {
    if (!bytes && size != 0) throw TessaryException("there are no bytes");
    input->input.push({bytes, size});
    return TXSUB_OK;
  });
}

txsub_result txsub_push_sample(txsub_input* input, const uint8_t* bytes, size_t size,
                               int64_t time_ns) {
  return guarded(input, [&] {
    if (!bytes && size != 0) throw TessaryException("there are no bytes");
    if (time_ns < 0) throw TessaryException("there are no times before 0");
    input->input.pushSample({bytes, size}, static_cast<std::uint64_t>(time_ns) / 100);
    return TXSUB_OK;
  });
}

txsub_result txsub_end(txsub_input* input) {
  return guarded(input, [&] {
    input->input.end();
    return TXSUB_OK;
  });
}

txsub_result txsub_next(txsub_input* input, const txsub_cue** cue) {
  if (cue) *cue = nullptr;
  return guarded(input, [&] {
    if (!cue) throw TessaryException("there is no place for the cue");
    auto record = input->input.next();
    if (!record) return input->input.isAtEnd() ? TXSUB_END : TXSUB_MORE;
    *cue = &record.release()->view();  // the caller's
    return TXSUB_CUE;
  });
}

void txsub_cue_free(const txsub_cue** cue) {
  if (!cue || !*cue) return;
  delete static_cast<const CueRecord*>((*cue)->origin);
  *cue = nullptr;
}

size_t txsub_service_count(const txsub_input* input) {
  return input ? input->input.services().size() : 0;
}

const txsub_service* txsub_service_at(const txsub_input* input, size_t index) {
  if (index >= txsub_service_count(input)) return nullptr;
  return &input->input.services()[index].view;
}

const char* txsub_error(const txsub_input* input) {
  return input ? input->error.c_str() : "there is no input";
}

void txsub_close(txsub_input** input) {
  if (!input) return;
  delete *input;
  *input = nullptr;
}

txsub_writer* txsub_writer_open(const char* path, const txsub_service* service) {
  auto* const writer = new (std::nothrow) txsub_writer;
  guarded(writer, [&] {
    if (!path || !service) throw TessaryException("there is no path, or no service");
    const auto extension = korr::txsub::utf8FromPath(korr::txsub::pathFromUtf8(path).extension());
    korr::txsub::PlayableRequest request;
    for (const auto format : {korr::txsub::PlayableFormat::WebVtt, korr::txsub::PlayableFormat::Srt,
                              korr::txsub::PlayableFormat::Ttml}) {
      if (extension == korr::txsub::extensionOf(format)) request.format = format;
    }
    if (extension != korr::txsub::extensionOf(request.format)) {
      throw TessaryException("the name '" + std::string(path) +
                             "' ends in none of .vtt, .srt, .ttml");
    }
    request.type = korr::txsub::typeOf(service->kind);
    if (!korr::txsub::canHold(request.format, request.type)) {
      throw TessaryException("pictures go into .ttml files");
    }
    request.path = path;
    request.language = service->language;
    writer->file = korr::txsub::createPlayableFile(request);
    return TXSUB_OK;
  });
  return writer;
}

txsub_result txsub_writer_add(txsub_writer* writer, const txsub_cue* cue) {
  return guarded(writer, [&] {
    if (!writer->file) throw TessaryException("there is no file, or it is finished");
    if (!cue || !cue->origin) throw TessaryException("there is no cue");
    writer->file->write(static_cast<const CueRecord*>(cue->origin)->cue());
    return TXSUB_OK;
  });
}

txsub_result txsub_writer_finish(txsub_writer* writer) {
  return guarded(writer, [&] {
    if (!writer->file) throw TessaryException("there is no file, or it is finished");
    writer->file->finish();
    writer->file.reset();
    return TXSUB_OK;
  });
}

const char* txsub_writer_error(const txsub_writer* writer) {
  return writer ? writer->error.c_str() : "there is no writer";
}

void txsub_writer_close(txsub_writer** writer) {
  if (!writer) return;
  delete *writer;
  *writer = nullptr;
}
