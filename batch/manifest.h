// SPDX-License-Identifier: MIT

// What a batch is to convert.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korr::txsub {

/// One recording and what is to become of it.
struct Job {
  std::size_t line = 0;  ///< of the manifest, from 1
  std::string input;     ///< UTF-8
  std::string output;    ///< UTF-8; as `convert` takes it
  std::vector<std::string> options;

  friend bool operator==(const Job&, const Job&) = default;
};

struct ManifestMistake {
  std::size_t line = 0;                    ///< from 1
  std::optional<std::size_t> column = {};  ///< in bytes, from 1; nothing: the line as a whole
  std::string message;
};

struct Manifest {
  std::vector<Job> jobs;
  std::vector<ManifestMistake> mistakes;  ///< in order of lines
};

/// What lines leave out.
struct ManifestDefaults {
  std::string output;
  std::vector<std::string> options;
};

/// Why `convert` would refuse a job's options; nothing when it takes them.
using CheckJob = std::function<std::optional<std::string>(const Job& job)>;

/// Reads a line each: a path, or a JSON object with `input` and, where they differ from the
/// defaults, `output` and `options` (an array of words). Empty lines and those that begin with '#'
/// are passed over. In outputs ${input} stands for the input's name without folder and extension,
/// ${folder} for its folder. Outputs that collide with each other or with an input are mistakes.
Manifest readManifest(std::string_view text, const ManifestDefaults& defaults,
                      const CheckJob& check);

}  // namespace korr::txsub
