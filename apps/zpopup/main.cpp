// zpopup: create, inspect and check popups from the command line.
#include <cstdio>
#include <string>

#include "commands.h"
#include "file_error.h"
#include "zephyr/support/errors.h"

namespace {

void PrintUsage(FILE* out) {
  std::fputs("usage: zpopup COMMAND [ARGS]\n\ncommands:\n", out);
  for (const auto& command : zephyr::cli::Commands()) {
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

int main(int argc, char** argv) {
  using zephyr::cli::kUsageError;
  zephyr::cli::Arguments args(argv + 1, argv + argc);
  if (args.empty()) {
    std::fputs("zpopup: no command given\n", stderr);
    PrintUsage(stderr);
    return kUsageError;
  }
  std::string name = args.front();
  args.erase(args.begin());
  if (name == "--version") {
    std::printf("zpopup %s\n", ZEPHYR_VERSION);
    return zephyr::cli::kSuccess;
  }
  if (name == "--help" || name == "-h" || (name == "help" && args.empty())) {
    PrintUsage(stdout);
    return zephyr::cli::kSuccess;
  }
  if (name == "help") {
    for (const auto& command : zephyr::cli::Commands()) {
      if (args.front() == command.name) {
        std::fputs(command.usage, stdout);
        return zephyr::cli::kSuccess;
      }
    }
    std::fprintf(stderr, "zpopup: no command '%s'\n", args.front().c_str());
    PrintUsage(stderr);
    return kUsageError;
  }
  try {
    for (const auto& command : zephyr::cli::Commands()) {
      if (name == command.name) return zephyr::cli::RunCommand(command, args);
    }
    std::fprintf(stderr, "zpopup: unknown command '%s'\n", name.c_str());
    PrintUsage(stderr);
  } catch (const zephyr::cli::FileError& error) {
    std::fprintf(stderr, "zpopup: %s: %s\n", error.file.c_str(), error.description.c_str());
  } catch (const zephyr::Error& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.Description().c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.what());
  }
  return kUsageError;
}
