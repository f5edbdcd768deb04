// SPDX-License-Identifier: MIT

#include <windows.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/child_process.h"
#include "platform/terminal.h"

namespace korr::platform {

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

/// A handle that is closed when its owner goes.
class Handle {
 public:
  explicit Handle(HANDLE handle = nullptr)
      : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~Handle() {
    if (handle_) ::CloseHandle(handle_);
  }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  HANDLE handle_;
};

std::wstring wide(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

// As CommandLineToArgvW takes it apart: backslashes count only before a quotation mark.
std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t letter : word) {
    if (letter == L'"') text.append(backslashes + 1, L'\\');
    backslashes = letter == L'\\' ? backslashes + 1 : 0;
    text += letter;
  }
  text.append(backslashes, L'\\');
  return text + L'"';
}

Handle openForChild(const std::filesystem::path& path, DWORD access, DWORD creation) {
  SECURITY_ATTRIBUTES inherited{.nLength = sizeof(SECURITY_ATTRIBUTES),
                                .lpSecurityDescriptor = nullptr,
                                .bInheritHandle = TRUE};
  Handle handle(::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                              creation, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle) fail("cannot open a file for another program");
  return handle;
}

// Its processes end with the last handle to it.
Handle makeJob(const std::optional<std::uint64_t>& memoryLimit) {
  Handle job(::CreateJobObjectW(nullptr, nullptr));
  if (!job) fail("CreateJobObject");
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  if (memoryLimit) {
    limits.BasicLimitInformation.LimitFlags |= JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = static_cast<SIZE_T>(*memoryLimit);
  }
  if (!::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                 sizeof(limits))) {
    fail("SetInformationJobObject");
  }
  return job;
}

}  // namespace

struct ChildProcess::State {
  Handle job;
  Handle process;
  DWORD id = 0;
};

ChildProcess::ChildProcess(const ChildCall& call) : state_(std::make_unique<State>()) {
  const Handle input = openForChild("NUL", GENERIC_READ, OPEN_EXISTING);
  const Handle output = openForChild("NUL", GENERIC_WRITE, OPEN_EXISTING);
  const Handle errors = openForChild(call.errors, GENERIC_WRITE, CREATE_ALWAYS);
  state_->job = makeJob(call.memoryLimit);

  std::wstring line = quoted(call.program.wstring());
  for (const auto& word : call.arguments) line += L' ' + quoted(wide(word));
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = input.get();
  start.hStdOutput = output.get();
  start.hStdError = errors.get();
  PROCESS_INFORMATION information{};
  if (!::CreateProcessW(call.program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED | CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start,
                        &information)) {
    fail("CreateProcess");
  }
  state_->process = Handle(information.hProcess);
  state_->id = information.dwProcessId;
  const Handle thread(information.hThread);
  if (!::AssignProcessToJobObject(state_->job.get(), information.hProcess)) {
    ::TerminateProcess(information.hProcess, 1);
    fail("AssignProcessToJobObject");
  }
  ::ResumeThread(thread.get());
}

ChildProcess::~ChildProcess() = default;  // the job ends what still runs
ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;
ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(state_, other.state_);
  return *this;
}

void ChildProcess::askToEnd() {
  ::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, state_->id);
}

void ChildProcess::kill() {
  ::TerminateProcess(state_->process.get(), 1);
}

std::optional<int> ChildProcess::exitCode() {
  DWORD code = 0;
  if (::WaitForSingleObject(state_->process.get(), 0) != WAIT_OBJECT_0) return std::nullopt;
  if (!::GetExitCodeProcess(state_->process.get(), &code)) return 1;
  return static_cast<int>(code);
}

void waitForAny(const std::vector<ChildProcess*>& children, std::chrono::milliseconds longest) {
  // An interruption has no handle to wait for.
  constexpr std::chrono::milliseconds kGlance{100};
  std::vector<HANDLE> handles;
  for (const auto* child : children) handles.push_back(child->state_->process.get());
  handles.resize(std::min<std::size_t>(handles.size(), MAXIMUM_WAIT_OBJECTS));
  const auto pause = static_cast<DWORD>(std::min(longest, kGlance).count());
  if (handles.empty()) return ::Sleep(pause);
  ::WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, pause);
}

}  // namespace korr::platform
