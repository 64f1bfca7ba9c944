#pragma once

#include "Tests/ScratchFolder.h"

/// An application bundle whose executable is a shell script.
inline void makeApplication(const std::filesystem::path& bundle, const std::string& identifier,
                            const std::string& script, const std::string& version = "1.0") {
  const std::string name = bundle.stem();
  writeText(bundle / "Contents/Info.plist",
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
            "<key>CFBundleIdentifier</key><string>" +
                identifier +
                "</string>"
                "<key>CFBundleExecutable</key><string>" +
                name +
                "</string>"
                "<key>CFBundleVersion</key><string>" +
                version + "</string></dict></plist>");
  const auto executable = bundle / "Contents/Linux" / name;
  writeText(executable, "#!/bin/sh\n" + script + "\n");
  std::filesystem::permissions(executable, std::filesystem::perms(0755));
}
