#include "Programs/SampleHost/ConsoleOutput.h"

#include "Platform/Foundation/JSON.h"

namespace samplehost {

void ConsoleOutput::write(const platform::Dictionary& line) {
  const std::string text = platform::jsonText(line) + "\n";
  const std::lock_guard lock(mutex_);
  std::fwrite(text.data(), 1, text.size(), stream_);
  std::fflush(stream_);
}

}  // namespace samplehost
