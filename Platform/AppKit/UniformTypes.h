#pragma once

#include <string>
#include <string_view>

#include "Platform/Port/FileIcons.h"

namespace platform {

/// What a host calls a file type: a type identifier ("public.png"), a MIME type ("image/png") or the end of a file's
/// name, with or without its dot ("png", ".tar.gz"). Letters may be in either case. An identifier that isn't known is
/// taken for an ending.
port::FileType fileTypeOf(std::string_view type);

/// What kinds of file look alike.
enum class FileFamily { generic, text, image, audio, video, archive, document, sheet, slides, folder };
FileFamily fileFamilyOf(const port::FileType& type);

}  // namespace platform
