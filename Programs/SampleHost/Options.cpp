#include "Programs/SampleHost/Options.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string_view>

namespace samplehost {

namespace {

void chooseMode(Options& options, Mode mode) {
  if (options.mode != Mode::messenger && options.mode != mode)
    throw std::runtime_error("only one of --tour, --console and --make-update can be asked for");
  options.mode = mode;
}

}  // namespace

Options Options::parse(std::span<char* const> arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    const auto value = [&]() -> std::string {
      if (i + 1 == arguments.size()) throw std::runtime_error(fmt::format("{} needs a value", argument));
      return arguments[++i];
    };
    if (argument == "--backend") {
      options.backend = value();
    } else if (argument == "--bundle") {
      options.bundle = value();
    } else if (argument == "--out") {
      options.out = value();
    } else if (argument == "--tour") {
      chooseMode(options, Mode::tour);
    } else if (argument == "--console") {
      chooseMode(options, Mode::console);
    } else if (argument == "--update") {
      options.update = value();
    } else if (argument == "--make-update") {
      chooseMode(options, Mode::makeUpdate);
      options.version = value();
      options.archive = value();
    } else if (argument == "--say-painted") {
      options.saysPainted = true;
    } else if (argument == "--help") {
      options.mode = Mode::help;
      return options;
    } else {
      throw std::runtime_error(fmt::format("unknown argument \"{}\"; --help lists them", argument));
    }
  }
  return options;
}

const char* Options::usage() {
  return "mirelo-host [--backend desktop|headless] [--bundle FOLDER] [--tour [--out FOLDER] | --console |\n"
         "            --make-update VERSION ARCHIVE | [--say-painted] [--update ARCHIVE]]\n"
         "\n"
         "Without --tour or --console it opens a messenger window and runs until it is closed.\n"
         "  --backend NAME   the machine to run on; without it the desktop, when its display can be reached\n"
         "  --bundle FOLDER  the plug-in; without it ../lib/VeltrikAppKit.bundle beside this program\n"
         "  --tour           drives itself through the plug-in and prints what was expected and seen\n"
         "  --out FOLDER     where the tour also writes transcript.txt and, on a desktop, pictures\n"
         "  --say-painted    prints \"painted\" when the messenger's window shows its first picture\n"
         "  --update ARCHIVE installs the update when the window stands, ends, and comes back as the new version\n"
         "  --make-update VERSION ARCHIVE\n"
         "                   packs this application, as an update to that version, with its relauncher\n"
         "  --console        is driven by JSON lines on standard input (docs/console.md)\n";
}

}  // namespace samplehost
