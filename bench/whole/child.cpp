#include "whole/child.h"

#include <json/reader.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace bench {

namespace {

std::vector<std::string> ArgumentsOf(const RunRequest& request) {
  std::vector<std::string> arguments = {"/proc/self/exe", "--run",     request.kind,    "--folder",
                                        request.folder,   "--variant", request.variant, "--level",
                                        request.level,    "--scratch", request.scratch};
  std::array<char, 4096> self{};
  const ssize_t length = readlink("/proc/self/exe", self.data(), self.size() - 1);
  if (length > 0) arguments[0].assign(self.data(), static_cast<size_t>(length));
  if (request.of_log) arguments.emplace_back("--log");
  if (request.is_counted) arguments.emplace_back("--counted");
  return arguments;
}

// What a program writes to one of its outputs; false when it fails. The program is started by
// name and looked for as a shell does.
bool Capture(const std::vector<std::string>& arguments, int output, std::string& text) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return false;
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.data()));
    argv.push_back(nullptr);
    dup2(ends[1], output);
    close(ends[0]);
    close(ends[1]);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  close(ends[1]);
  std::array<char, 4096> buffer{};
  for (ssize_t got = 0; (got = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

std::optional<Json::Value> RunInChild(const RunRequest& request) {
  std::string text;
  const bool succeeded = Capture(ArgumentsOf(request), STDOUT_FILENO, text);
  Json::Value value;
  std::istringstream stream(text);
  const Json::CharReaderBuilder reader;
  if (succeeded && Json::parseFromStream(reader, stream, &value, nullptr)) return value;
  std::cerr << "failed: " << request.kind << " of " << request.folder << "\n";
  return std::nullopt;
}

std::optional<double> CountInstructions(const RunRequest& request) {
  RunRequest counted = request;
  counted.is_counted = true;
  std::vector<std::string> arguments = {"valgrind", "--tool=callgrind", "--instr-atstart=no",
                                        "--callgrind-out-file=/dev/null"};
  for (std::string& argument : ArgumentsOf(counted)) arguments.push_back(std::move(argument));
  std::string text;
  if (!Capture(arguments, STDERR_FILENO, text)) return std::nullopt;
  const std::string label = "Collected : ";
  const size_t at = text.find(label);
  if (at == std::string::npos) return std::nullopt;
  return std::strtod(text.c_str() + at + label.size(), nullptr);
}

}  // namespace bench
