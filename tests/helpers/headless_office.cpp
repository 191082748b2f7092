#include "helpers/headless_office.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/container/XEnumeration.hpp>
#include <com/sun/star/container/XEnumerationAccess.hpp>
#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XDesktop2.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/sheet/XCalculatable.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <rtl/bootstrap.hxx>
#include <thread>
#include <vector>

extern char** environ;

namespace zephyr::testing {

namespace {

namespace uno_api = ::com::sun::star;
using uno_api::uno::Reference;
using uno_api::uno::UNO_QUERY_THROW;

constexpr const char* kOffice = "/usr/bin/soffice";

Reference<uno_api::frame::XDesktop2> Desktop(const std::string& pipe) {
  static const auto local = []() {
    rtl::Bootstrap::set("URE_BOOTSTRAP", ZEPHYR_URE_BOOTSTRAP);
    return cppu::defaultBootstrap_InitialComponentContext();
  }();
  auto resolver = uno_api::bridge::UnoUrlResolver::create(local);
  rtl::OUString url = rtl::OUString::createFromAscii(
      ("uno:pipe,name=" + pipe + ";urp;StarOffice.ComponentContext").c_str());
  for (int attempt = 0;; ++attempt) {
    try {
      Reference<uno_api::uno::XComponentContext> context(resolver->resolve(url), UNO_QUERY_THROW);
      return uno_api::frame::Desktop::create(context);
    } catch (const uno_api::uno::Exception&) {
      if (attempt == 600) throw;  // a minute
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

}  // namespace

HeadlessOffice::HeadlessOffice() : pipe_("zephyrtest" + std::to_string(::getpid())) {
  if (::access(kOffice, X_OK) != 0) return;
  // A broken connection is then an error of the test, not the end of it.
  ::signal(SIGPIPE, SIG_IGN);
  // An office that makes its profile restarts itself once, which would end
  // the connection half-way: the profile is made first, by an office that
  // ends as soon as it is up.
  std::vector<std::string> args = {kOffice, "--headless", "--invisible", "--norestore", "--nologo",
                                    "-env:UserInstallation=file://" + profile_.Path() + "/profile"};
  std::vector<std::string> first = args;
  first.push_back("--terminate_after_init");
  Run(std::move(first), true);
  args.push_back("--accept=pipe,name=" + pipe_ + ";urp;StarOffice.ComponentContext");
  process_ = Run(std::move(args), false);
}

pid_t HeadlessOffice::Run(std::vector<std::string> args, bool wait) {
  std::vector<char*> argv;
  for (auto& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  // The launcher starts the office as its child: both get a process group of
  // their own. Their output goes nowhere, so that they hold no pipe of the
  // caller's.
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&files, 2, "/dev/null", O_WRONLY, 0);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  posix_spawnattr_setpgroup(&attributes, 0);
  pid_t process = 0;
  if (::posix_spawn(&process, argv[0], &files, &attributes, argv.data(), environ) != 0) {
    process = 0;
  }
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (wait && process > 0) ::waitpid(process, nullptr, 0);
  return wait ? 0 : process;
}

HeadlessOffice::~HeadlessOffice() {
  if (process_ <= 0) return;
  ::kill(-process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  // The launcher puts the office in a process group of its own: it is found
  // by the pipe only it listens on.
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    std::ifstream file(entry.path() / "cmdline", std::ios::binary);
    std::string command((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (command.find("pipe,name=" + pipe_ + ";") == std::string::npos) continue;
    pid_t office = static_cast<pid_t>(std::atoi(entry.path().filename().c_str()));
    if (office > 0) ::kill(office, SIGKILL);
  }
}

void HeadlessOffice::Show(const std::string& path, int sheet) {
  uno_api::uno::Sequence<uno_api::beans::PropertyValue> hidden(1);
  hidden.getArray()[0].Name = "Hidden";
  hidden.getArray()[0].Value <<= true;
  Reference<uno_api::sheet::XSpreadsheetDocument> document(
      Desktop(pipe_)->loadComponentFromURL(
          rtl::OUString::createFromAscii(("file://" + path).c_str()), "_blank", 0, hidden),
      UNO_QUERY_THROW);
  // Formulas as a user's office shows them: worked out, not as cached in the file.
  Reference<uno_api::sheet::XCalculatable>(document, UNO_QUERY_THROW)->calculateAll();
  Reference<uno_api::container::XIndexAccess> sheets(document->getSheets(), UNO_QUERY_THROW);
  Reference<uno_api::sheet::XSpreadsheet> shown(sheets->getByIndex(sheet), UNO_QUERY_THROW);
  Reference<uno_api::frame::XModel> model(document, UNO_QUERY_THROW);
  Reference<uno_api::sheet::XSpreadsheetView>(model->getCurrentController(), UNO_QUERY_THROW)
      ->setActiveSheet(shown);
}

void HeadlessOffice::CloseAll() {
  auto open = Desktop(pipe_)->getComponents()->createEnumeration();
  while (open->hasMoreElements()) {
    Reference<uno_api::util::XCloseable> document(open->nextElement(), uno_api::uno::UNO_QUERY);
    if (document.is()) document->close(true);
  }
}

}  // namespace zephyr::testing
