// SPDX-License-Identifier: MIT

// The library for Python.
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <txsub/txsub.h>

namespace {

namespace py = pybind11;
using Warn = std::function<void(const std::string&)>;

constexpr double kSecond = 1e9;  // in nanoseconds

class Error final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CloseInput {
  void operator()(txsub_input* input) const { txsub_close(&input); }
};
struct CloseWriter {
  void operator()(txsub_writer* writer) const { txsub_writer_close(&writer); }
};

struct FreeCue {
  void operator()(const txsub_cue* cue) const { txsub_cue_free(&cue); }
};

/// A service, and what keeps it alive.
struct Service {
  std::shared_ptr<txsub_input> input;
  const txsub_service* service = nullptr;

  const char* kind() const {
    constexpr const char* kKinds[] = {"teletext", "captions", "dvb"};
    return kKinds[service->kind];
  }
};

struct Run {
  std::string text;
  std::uint32_t foreground = 0;
  std::uint32_t background = 0;
  bool italic = false;
  bool underline = false;
};

struct Line {
  std::vector<Run> runs;
  double left = 0;
  double top = 0;
};

struct Picture {
  py::bytes rgba;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t displayWidth = 0;
  std::uint32_t displayHeight = 0;
};

Line lineFrom(const txsub_line& line) {
  Line result{.runs = {}, .left = line.left, .top = line.top};
  for (std::size_t i = 0; i < line.run_count; ++i) {
    const txsub_run& run = line.runs[i];
    result.runs.push_back({.text = run.text,
                           .foreground = run.foreground,
                           .background = run.background,
                           .italic = (run.style & TXSUB_ITALIC) != 0,
                           .underline = (run.style & TXSUB_UNDERLINE) != 0});
  }
  return result;
}

Picture pictureFrom(const txsub_picture& picture) {
  const std::size_t size = std::size_t{picture.width} * picture.height * 4;
  return {.rgba = py::bytes(reinterpret_cast<const char*>(picture.rgba), size),
          .width = picture.width,
          .height = picture.height,
          .x = picture.x,
          .y = picture.y,
          .displayWidth = picture.display_width,
          .displayHeight = picture.display_height};
}

struct Cue {
  Service service;
  std::shared_ptr<const txsub_cue> cue;

  double start() const { return static_cast<double>(cue->start_ns) / kSecond; }
  double stop() const { return static_cast<double>(cue->stop_ns) / kSecond; }
  std::vector<Line> lines() const {
    std::vector<Line> lines;
    for (std::size_t i = 0; i < cue->line_count; ++i) lines.push_back(lineFrom(cue->lines[i]));
    return lines;
  }
  std::optional<Picture> picture() const {
    if (!cue->picture) return std::nullopt;
    return pictureFrom(*cue->picture);
  }
};

class Input {
 public:
  Input(const std::filesystem::path& path, const std::optional<std::string>& page,
        const std::optional<std::string>& language, std::uint32_t pid, bool keepTimes, Warn warn)
      : warn_(std::make_unique<Warn>(std::move(warn))) {
    txsub_options options = TXSUB_OPTIONS_INIT;
    options.page = page ? page->c_str() : nullptr;
    options.language = language ? language->c_str() : nullptr;
    options.pid = pid;
    options.keep_times = keepTimes ? 1 : 0;
    if (*warn_) {
      options.warn = [](void* context, const char* message) {
        const py::gil_scoped_acquire locked;
        try {
          (*static_cast<Warn*>(context))(message);
        } catch (py::error_already_set& error) {
          error.discard_as_unraisable("txsub: warn");
        }
      };
      options.context = warn_.get();
    }
    const std::string name = path.string();
    const py::gil_scoped_release unlocked;
    input_ = std::shared_ptr<txsub_input>(txsub_open(name.c_str(), &options), CloseInput());
    check();
  }

  Cue next() {
    const txsub_cue* cue = nullptr;
    txsub_result result = TXSUB_END;
    {
      const py::gil_scoped_release unlocked;
      result = txsub_next(input_.get(), &cue);
    }
    if (result == TXSUB_END) throw py::stop_iteration();
    if (result != TXSUB_CUE) check();
    return {.service = {input_, txsub_service_at(input_.get(), cue->service)},
            .cue = std::shared_ptr<const txsub_cue>(cue, FreeCue())};
  }

  std::vector<Service> services() const {
    std::vector<Service> services;
    for (std::size_t i = 0; i < txsub_service_count(input_.get()); ++i) {
      services.push_back({input_, txsub_service_at(input_.get(), i)});
    }
    return services;
  }

 private:
  void check() const {
    if (!input_) throw std::bad_alloc();
    const char* const error = txsub_error(input_.get());
    if (*error != 0) throw Error(error);
  }

  std::unique_ptr<Warn> warn_;  // where the library finds it
  std::shared_ptr<txsub_input> input_;
};

/// The cues of an input that are of one service or language.
class Selection {
 public:
  Selection(std::shared_ptr<Input> input, std::string which)
      : input_(std::move(input)), which_(std::move(which)) {}

  Cue next() {
    while (true) {
      Cue cue = input_->next();
      const txsub_service& service = *cue.service.service;
      if (service.name == which_ || service.language == which_) return cue;
    }
  }

 private:
  std::shared_ptr<Input> input_;
  std::string which_;
};

class Writer {
 public:
  Writer(const std::filesystem::path& path, const Service& service)
      : writer_(txsub_writer_open(path.string().c_str(), service.service)) {
    if (!writer_) throw std::bad_alloc();
    const char* const error = txsub_writer_error(writer_.get());
    if (*error != 0) throw Error(error);
  }

  void add(const Cue& cue) { check(txsub_writer_add(writer_.get(), cue.cue.get())); }
  void finish() { check(txsub_writer_finish(writer_.get())); }
  void close() { writer_.reset(); }

 private:
  void check(txsub_result result) const {
    if (result == TXSUB_FAILED) throw Error(txsub_writer_error(writer_.get()));
  }

  std::unique_ptr<txsub_writer, CloseWriter> writer_;
};

}  // namespace

PYBIND11_MODULE(_txsub, module) {
  py::register_exception<Error>(module, "Error");
  module.def("version", &txsub_version);

  py::class_<Service>(module, "Service")
      .def_property_readonly("kind", &Service::kind)
      .def_property_readonly("name", [](const Service& it) { return it.service->name; })
      .def_property_readonly("language", [](const Service& it) { return it.service->language; })
      .def_property_readonly("pid", [](const Service& it) { return it.service->pid; })
      .def_property_readonly("program", [](const Service& it) { return it.service->program; })
      .def_property_readonly("hard_of_hearing",
                             [](const Service& it) { return it.service->hard_of_hearing != 0; })
      .def("__repr__", [](const Service& it) {
        return "<txsub.Service " + std::string(it.service->name) + ' ' + it.service->language + '>';
      });
  py::class_<Run>(module, "Run")
      .def_readonly("text", &Run::text)
      .def_readonly("foreground", &Run::foreground)
      .def_readonly("background", &Run::background)
      .def_readonly("italic", &Run::italic)
      .def_readonly("underline", &Run::underline);
  py::class_<Line>(module, "Line")
      .def_readonly("runs", &Line::runs)
      .def_readonly("left", &Line::left)
      .def_readonly("top", &Line::top);
  py::class_<Picture>(module, "Picture")
      .def_readonly("rgba", &Picture::rgba)
      .def_readonly("width", &Picture::width)
      .def_readonly("height", &Picture::height)
      .def_readonly("x", &Picture::x)
      .def_readonly("y", &Picture::y)
      .def_readonly("display_width", &Picture::displayWidth)
      .def_readonly("display_height", &Picture::displayHeight);
  py::class_<Cue>(module, "Cue")
      .def_readonly("service", &Cue::service)
      .def_property_readonly("start", &Cue::start)
      .def_property_readonly("stop", &Cue::stop)
      .def_property_readonly("text", [](const Cue& it) { return it.cue->text; })
      .def_property_readonly("lines", &Cue::lines)
      .def_property_readonly("picture", &Cue::picture);

  py::class_<Selection>(module, "Selection")
      .def("__iter__", [](Selection& self) -> Selection& { return self; })
      .def("__next__", &Selection::next);
  py::class_<Input, std::shared_ptr<Input>>(module, "Input")
      .def("__iter__", [](const std::shared_ptr<Input>& self) { return self; })
      .def("__next__", &Input::next)
      .def_property_readonly("services", &Input::services)
      .def("service", [](const std::shared_ptr<Input>& self, const std::string& which) {
        return Selection(self, which);
      });
  py::class_<Writer>(module, "Writer")
      .def(py::init<const std::filesystem::path&, const Service&>())
      .def("add", &Writer::add)
      .def("finish", &Writer::finish)
      .def("__enter__", [](Writer& self) -> Writer& { return self; })
      .def("__exit__", [](Writer& self, const py::object& exception, const py::args&) {
        if (exception.is_none()) self.finish();
        self.close();
      });

  module.def(
      "open",
      [](const std::filesystem::path& path, const std::optional<std::string>& page,
         const std::optional<std::string>& language, std::uint32_t pid, bool keepTimes,
         const std::optional<Warn>& warn) {
        return std::make_shared<Input>(path, page, language, pid, keepTimes,
                                       warn.value_or(nullptr));
      },
      py::arg("path"), py::kw_only(), py::arg("page") = py::none(),
      py::arg("language") = py::none(), py::arg("pid") = 0, py::arg("keep_times") = false,
      py::arg("warn") = py::none());
}
