#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/Session.h"
#include "Programs/SampleHost/ChatWindow.h"
#include "Programs/SampleHost/Console.h"
#include "Programs/SampleHost/Host.h"
#include "Programs/SampleHost/Machine.h"
#include "Programs/SampleHost/Options.h"
#include "Programs/SampleHost/PluginBundle.h"
#include "Programs/SampleHost/Tour.h"
#include "Programs/SampleHost/Update.h"

namespace samplehost {

namespace {

using FilePointer = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

platform::Rect centredFrame(platform::Size size) {
  const platform::Rect screen = platform::NSScreen::screens().front().visibleFrame;
  return {screen.x + (screen.width - size.width) / 2, screen.y + (screen.height - size.height) / 2, size.width,
          size.height};
}

int runMessenger(Host& host, const Options& options) {
  host.launch();
  ChatWindow chat(host, "main");
  chat.open(centredFrame({460, 640}));
  if (const std::string version = versionOf(*platform::Bundle::main()); !version.empty())
    chat.announce("Mirelo " + version);
  if (options.update) installUpdate(host, *options.update);
  if (options.saysPainted) {
    host.layer().hostView("main")->setFirstDrawn([] {
      std::puts("painted");
      std::fflush(stdout);
    });
  }
  // A messenger of one window is over when that was closed.
  host.events().listen([](const HostEvent& event) {
    if (event.name == "windowWillClose" && event.from == "window:main") platform::NSApplication::shared().stop();
  });
  return platform::NSApplication::shared().run();
}

int runTour(Host& host, Machine& machine, const Options& options) {
  FilePointer file(nullptr, &std::fclose);
  std::vector<std::FILE*> streams = {stdout};
  if (options.out) {
    std::filesystem::create_directories(*options.out);
    file.reset(std::fopen((*options.out / "transcript.txt").c_str(), "w"));
    if (!file) throw std::runtime_error((*options.out / "transcript.txt").string() + " can't be written");
    streams.push_back(file.get());
  }
  Transcript transcript(streams);
  return Tour(host, machine, transcript, options.out).run() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runConsole(Host& host, Machine& machine) {
  // Whatever else writes to standard output must not come between the lines.
  const int output = dup(STDOUT_FILENO);
  if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) throw std::runtime_error("standard output is closed");
  const FilePointer stream(fdopen(output, "w"), &std::fclose);
  if (machine.headless) machine.headless->loop().setDrivenFromOutside(true);
  const Console console(host, machine, STDIN_FILENO, stream.get());
  return platform::NSApplication::shared().run();
}

int run(const Options& options) {
  if (options.mode == Mode::help) {
    std::fputs(Options::usage(), stdout);
    return EXIT_SUCCESS;
  }
  if (options.mode == Mode::makeUpdate) {
    makeUpdate(options.version, options.archive);
    return EXIT_SUCCESS;
  }
  Machine machine = makeMachine(options.backend);
  const platform::Session session(*machine.backend);
  Host host(loadPlugin(options.bundle.value_or(defaultBundlePath())));
  int status = EXIT_SUCCESS;
  if (options.mode == Mode::tour) {
    status = runTour(host, machine, options);
  } else if (options.mode == Mode::console) {
    status = runConsole(host, machine);
  } else {
    status = runMessenger(host, options);
  }
  host.end();
  return status;
}

}  // namespace

}  // namespace samplehost

int main(int argc, char** argv) {
  try {
    return samplehost::run(samplehost::Options::parse({argv + 1, static_cast<std::size_t>(argc - 1)}));
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "mirelo-host: %s\n", problem.what());
    return 2;
  }
}
