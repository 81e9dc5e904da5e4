// The log file is one spdlog sink. A writer takes a share of it under the lock and writes outside
// the lock, so that UninitLog never closes a file under a line: the last share closes it.
#include "vexalogsdk/vexa_log_sdk.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace {

using FileSink = spdlog::sinks::basic_file_sink_mt;

struct LogTarget {
  LogTarget(const char* module, const char* log_file_path)
      : sink(log_file_path), default_module(module == nullptr ? "" : module) {}

  FileSink sink;
  std::string default_module;
};

std::mutex g_target_mutex;
std::shared_ptr<LogTarget> g_target;  // null before InitLogEx and after UninitLog

std::shared_ptr<LogTarget> CurrentTarget() {
  const std::lock_guard<std::mutex> lock(g_target_mutex);
  return g_target;
}

// The replaced target goes with the argument, after the lock: closing a file may take its time.
void ReplaceTarget(std::shared_ptr<LogTarget> target) {
  const std::lock_guard<std::mutex> lock(g_target_mutex);
  g_target.swap(target);
}

std::shared_ptr<LogTarget> OpenTarget(const char* module, const char* log_file_path) {
  auto target = std::make_shared<LogTarget>(module, log_file_path);
  target->sink.set_formatter(std::make_unique<spdlog::pattern_formatter>(
      "%Y-%m-%dT%H:%M:%S.%eZ %l %n %v", spdlog::pattern_time_type::utc, "\n"));
  return target;
}

spdlog::level::level_enum SinkLevel(int level) {
  if (level < 1) return spdlog::level::debug;
  if (level == 1) return spdlog::level::info;
  return level == 2 ? spdlog::level::warn : spdlog::level::err;
}

// The whole text, however long. A format that printf refuses is logged as it stands, which tells
// more than nothing.
std::string FormatText(const char* format, std::va_list arguments) {
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0) return format;
  std::string text(static_cast<std::size_t>(length) + 1, '\0');       // vsnprintf ends it with a 0
  (void)std::vsnprintf(text.data(), text.size(), format, arguments);  // measured above
  text.pop_back();
  return text;
}

void WriteLine(LogTarget& target, const char* module, int level, const std::string& text) {
  const bool ends_line = !text.empty() && text.back() == '\n';  // the sink ends the line as well
  const spdlog::string_view_t message(text.data(), text.size() - (ends_line ? 1 : 0));
  const std::string& fallback = target.default_module;
  const spdlog::string_view_t name =
      module == nullptr ? spdlog::string_view_t(fallback) : spdlog::string_view_t(module);
  target.sink.log(spdlog::details::log_msg(name, SinkLevel(level), message));
  target.sink.flush();
}

}  // namespace

int InitLogEx(const char* /*work_folder*/, const char* module, const char* log_file_path) {
  ReplaceTarget(nullptr);
  if (log_file_path == nullptr) return 1;
  try {
    ReplaceTarget(OpenTarget(module, log_file_path));
    return 0;
  } catch (...) {  // spdlog reports an unopenable file by an exception
    return 1;
  }
}

void LogEx(const char* module, int level, const char* format, ...) {
  if (format == nullptr) return;
  std::va_list arguments;
  va_start(arguments, format);
  try {
    const std::shared_ptr<LogTarget> target = CurrentTarget();
    if (target) WriteLine(*target, module, level, FormatText(format, arguments));
  } catch (...) {
    // A full disk or memory at its end: the line is lost, the caller goes on.
  }
  va_end(arguments);
}

int UninitLog() {
  ReplaceTarget(nullptr);
  return 0;
}
