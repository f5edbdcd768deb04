// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include "platform/child_process.h"
#include "platform/interrupt_posix.h"
#include "platform/terminal.h"

namespace korr::platform {

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// A descriptor that is closed when its owner goes.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  operator int() const { return number_; }

 private:
  int number_;
};

// Only what is allowed between fork and exec.
[[noreturn]] void becomeProgram(const ChildCall& call, char** arguments, int errors, int life,
                                pid_t parent) {
#ifdef __linux__
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (::getppid() != parent) ::_exit(127);  // it was gone before it could be watched
#else
  static_cast<void>(parent);
#endif
  ::setpgid(0, 0);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) ::signal(signal, SIG_DFL);
  const int nothing = ::open("/dev/null", O_RDWR);
  ::dup2(nothing, STDIN_FILENO);
  ::dup2(nothing, STDOUT_FILENO);
  ::dup2(errors, STDERR_FILENO);
  ::fcntl(life, F_SETFD, 0);
  if (call.memoryLimit) {
    const auto most = static_cast<rlim_t>(*call.memoryLimit);
    const rlimit limit{.rlim_cur = most, .rlim_max = most};
    if (::setrlimit(RLIMIT_AS, &limit) != 0) ::_exit(127);
  }
  ::execv(call.program.c_str(), arguments);
  ::_exit(127);
}

}  // namespace

struct ChildProcess::State {
  pid_t id = -1;
  Descriptor life;  // the child holds the other end: closed when it has ended
  std::optional<int> exitCode;
};

ChildProcess::ChildProcess(const ChildCall& call) : state_(std::make_unique<State>()) {
  const Descriptor errors(
      ::open(call.errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (errors < 0) fail(call.errors.c_str());
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) fail("pipe");
  state_->life = Descriptor(ends[0]);
  const Descriptor childsEnd(ends[1]);

  std::string name = call.program.string();
  std::vector<std::string> words = call.arguments;
  std::vector<char*> arguments{name.data()};
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t parent = ::getpid();
  state_->id = ::fork();
  if (state_->id < 0) fail("fork");
  if (state_->id == 0) becomeProgram(call, arguments.data(), errors, childsEnd, parent);
}

ChildProcess::~ChildProcess() {
  if (!state_ || exitCode()) return;
  kill();
  ::waitpid(state_->id, nullptr, 0);
}

ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;
ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(state_, other.state_);
  return *this;
}

void ChildProcess::askToEnd() {
  if (!exitCode()) ::kill(state_->id, SIGTERM);
}

void ChildProcess::kill() {
  if (!exitCode()) ::kill(state_->id, SIGKILL);
}

std::optional<int> ChildProcess::exitCode() {
  int status = 0;
  if (!state_->exitCode && ::waitpid(state_->id, &status, WNOHANG) == state_->id) {
    state_->exitCode = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }
  return state_->exitCode;
}

void waitForAny(const std::vector<ChildProcess*>& children, std::chrono::milliseconds longest) {
  std::vector<pollfd> ends;
  // The descriptor of interruptions stays readable.
  if (!isInterrupted())
    ends.push_back({.fd = interruptDescriptor(), .events = POLLIN, .revents = 0});
  for (const auto* child : children) {
    ends.push_back({.fd = child->state_->life, .events = POLLIN, .revents = 0});
  }
  ::poll(ends.data(), static_cast<nfds_t>(ends.size()), static_cast<int>(longest.count()));
  // The end is closed a moment before the child can be waited for.
  for (std::size_t i = 0; i < children.size(); ++i) {
    const auto& end = ends[ends.size() - children.size() + i];
    if (end.revents == 0 || children[i]->state_->exitCode) continue;
    int status = 0;
    if (::waitpid(children[i]->state_->id, &status, 0) != children[i]->state_->id) continue;
    children[i]->state_->exitCode = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }
}

}  // namespace korr::platform
