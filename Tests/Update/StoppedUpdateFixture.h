#pragma once

#include <sys/mman.h>

#include "Platform/Foundation/RunLoop.h"
#include "Tests/Update/UpdateFixture.h"
#include "Tests/Zip/FaultStepper.h"

namespace veltrik {

/// A text that a stepped process writes without a system call.
class SharedText {
 public:
  SharedText()
      : page_(static_cast<Page*>(
            mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedText() { munmap(page_, sizeof(Page)); }
  SharedText(const SharedText&) = delete;
  SharedText& operator=(const SharedText&) = delete;

  void clear() { page_->size = 0; }
  void append(const std::string& line) {
    const std::size_t size = std::min(line.size(), sizeof page_->text - page_->size);
    std::copy_n(line.data(), size, page_->text + page_->size);
    page_->size += size;
  }
  std::string text() const { return {page_->text, page_->size}; }

 private:
  struct Page {
    std::size_t size;
    char text[100'000];
  };
  Page* page_;
};

/// Updates that are stepped, stopped and looked at.
class StoppedUpdate : public testing::Test {
 protected:
  void SetUp() override {
    if (!fault::canStep()) GTEST_SKIP() << "system calls can't be stepped here";
    bench.makeUpdate(bench.root / "update.zip");
    reset();
    old = treeOf(bench.installed());
    updated = treeOf(bench.root / "packed/Mirelo.app");
  }

  void reset() const {
    bench.makeInstalled();
    std::filesystem::remove_all(bench.downloads());
    std::filesystem::create_directories(bench.downloads());
    std::filesystem::copy_file(bench.root / "update.zip", bench.archive());
  }

  fault::Outcome run(fault::Injection injection) {
    injection.wholeTree = true;
    log.clear();
    const auto former = platform::setLogSink([this](const std::string& line) { log.append(line + "\n"); });
    const auto outcome = fault::runStepped(injection, [this] {
      const auto restarter = AppRestarter::make();
      restarter->restart(bench.archive());
      // Not the simulated machine's loop, which takes calls of its own for what it waits for.
      platform::RunLoop::main().runDue();
      return 0;
    });
    platform::setLogSink(former);
    return outcome;
  }

  /// Undisturbed, in this process.
  void runHere() {
    log.clear();
    const auto former = platform::setLogSink([this](const std::string& line) { log.append(line + "\n"); });
    const auto restarter = AppRestarter::make();
    restarter->restart(bench.archive());
    desktop.settle();
    UpdateBench::waitForStarted();
    platform::setLogSink(former);
  }

  bool logged(const std::string& part) const { return log.text().find(part) != std::string::npos; }
  bool standsComplete() const {
    const auto standing = treeOf(bench.installed());
    return standing == old || standing == updated;
  }
  bool stands(const std::map<std::string, std::string>& version) const { return treeOf(bench.installed()) == version; }
  bool nothingIsLeft() const {
    return namesIn(bench.root / "install") == std::vector<std::string>{"Mirelo.app"} &&
           namesIn(bench.downloads()) == std::vector<std::string>{"MireloRelauncher.app", "update.zip"};
  }

  const UpdateBench bench;
  std::map<std::string, std::string> old;
  std::map<std::string, std::string> updated;
  SharedText log;
  headless::HeadlessBackend desktop;
  platform::Session session{desktop};
};

}  // namespace veltrik
