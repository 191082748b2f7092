#include "run.h"

#include <cstdio>
#include <string>

#include "file_error.h"
#include "zephyr/support/errors.h"

namespace zephyr::cli {
namespace {

void PrintUsage(FILE* out) {
  std::fputs("usage: zpopup COMMAND [ARGS]\n\ncommands:\n", out);
  for (const auto& command : Commands()) {
    std::fprintf(out, "  %-6s %s\n", command.name, command.summary);
  }
  std::fputs(
      "\nPOPUP is a folder and base name (examples/Products); a path ending in .ZPT\n"
      "or .ZPD, in any letter case, names the same popup. Exit codes: 0 success,\n"
      "1 problems found, 2 usage errors or unreadable input.\n"
      "Run 'zpopup help COMMAND' for the details of one command.\n",
      out);
}

}  // namespace

int Main(Arguments args) {
  if (args.empty()) {
    std::fputs("zpopup: no command given\n", stderr);
    PrintUsage(stderr);
    return kUsageError;
  }
  std::string name = args.front();
  args.erase(args.begin());
  if (name == "--version") {
    std::printf("zpopup %s\n", ZEPHYR_VERSION);
    return kSuccess;
  }
  if (name == "--help" || name == "-h" || (name == "help" && args.empty())) {
    PrintUsage(stdout);
    return kSuccess;
  }
  if (name == "help") {
    for (const auto& command : Commands()) {
      if (args.front() == command.name) {
        std::fputs(command.usage, stdout);
        return kSuccess;
      }
    }
    std::fprintf(stderr, "zpopup: no command '%s'\n", args.front().c_str());
    PrintUsage(stderr);
    return kUsageError;
  }
  try {
    for (const auto& command : Commands()) {
      if (name == command.name) return RunCommand(command, args);
    }
    std::fprintf(stderr, "zpopup: unknown command '%s'\n", name.c_str());
    PrintUsage(stderr);
  } catch (const FileError& error) {
    std::fprintf(stderr, "zpopup: %s: %s\n", error.file.c_str(), error.description.c_str());
  } catch (const Error& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.Description().c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.what());
  }
  return kUsageError;
}

}  // namespace zephyr::cli

