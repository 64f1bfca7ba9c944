#include "Platform/AppKit/UniformTypes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace platform {

namespace {

using Row = std::pair<std::string_view, std::string_view>;

constexpr std::array kIdentifiers = {
    Row{"com.adobe.illustrator.ai-image", "application/illustrator"},
    Row{"com.adobe.pdf", "application/pdf"},
    Row{"com.adobe.photoshop-image", "image/vnd.adobe.photoshop"},
    Row{"com.adobe.postscript", "application/postscript"},
    Row{"com.apple.application", "application/x-executable"},
    Row{"com.apple.application-bundle", "application/x-executable"},
    Row{"com.apple.disk-image", "application/x-apple-diskimage"},
    Row{"com.apple.icns", "image/x-icns"},
    Row{"com.apple.iwork.keynote.key", "application/x-iwork-keynote-sffkey"},
    Row{"com.apple.iwork.numbers.numbers", "application/x-iwork-numbers-sffnumbers"},
    Row{"com.apple.iwork.pages.pages", "application/x-iwork-pages-sffpages"},
    Row{"com.apple.m4a-audio", "audio/mp4"},
    Row{"com.apple.m4v-video", "video/x-m4v"},
    Row{"com.apple.property-list", "application/x-plist"},
    Row{"com.apple.quicktime-movie", "video/quicktime"},
    Row{"com.compuserve.gif", "image/gif"},
    Row{"com.haansoft.hancomofficeviewer.mac.hwp", "application/x-hwp"},
    Row{"com.microsoft.bmp", "image/bmp"},
    Row{"com.microsoft.excel.xls", "application/vnd.ms-excel"},
    Row{"com.microsoft.ico", "image/vnd.microsoft.icon"},
    Row{"com.microsoft.powerpoint.ppt", "application/vnd.ms-powerpoint"},
    Row{"com.microsoft.waveform-audio", "audio/x-wav"},
    Row{"com.microsoft.word.doc", "application/msword"},
    Row{"com.netscape.javascript-source", "application/javascript"},
    Row{"com.pkware.zip-archive", "application/zip"},
    Row{"com.rarlab.rar-archive", "application/vnd.rar"},
    Row{"net.daringfireball.markdown", "text/markdown"},
    Row{"org.7-zip.7-zip-archive", "application/x-7z-compressed"},
    Row{"org.gnu.gnu-tar-archive", "application/x-tar"},
    Row{"org.gnu.gnu-zip-archive", "application/gzip"},
    Row{"org.oasis-open.opendocument.presentation", "application/vnd.oasis.opendocument.presentation"},
    Row{"org.oasis-open.opendocument.spreadsheet", "application/vnd.oasis.opendocument.spreadsheet"},
    Row{"org.oasis-open.opendocument.text", "application/vnd.oasis.opendocument.text"},
    Row{"org.openxmlformats.presentationml.presentation",
        "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    Row{"org.openxmlformats.spreadsheetml.sheet", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    Row{"org.openxmlformats.wordprocessingml.document",
        "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    Row{"org.webmproject.webp", "image/webp"},
    Row{"public.3gpp", "video/3gpp"},
    Row{"public.aiff-audio", "audio/x-aiff"},
    Row{"public.avi", "video/x-msvideo"},
    Row{"public.bzip2-archive", "application/x-bzip"},
    Row{"public.c-plus-plus-source", "text/x-c++src"},
    Row{"public.c-source", "text/x-csrc"},
    Row{"public.comma-separated-values-text", "text/csv"},
    Row{"public.css", "text/css"},
    Row{"public.data", "application/octet-stream"},
    Row{"public.directory", "inode/directory"},
    Row{"public.executable", "application/x-executable"},
    Row{"public.folder", "inode/directory"},
    Row{"public.heic", "image/heif"},
    Row{"public.heif", "image/heif"},
    Row{"public.html", "text/html"},
    Row{"public.jpeg", "image/jpeg"},
    Row{"public.json", "application/json"},
    Row{"public.mp3", "audio/mpeg"},
    Row{"public.mpeg", "video/mpeg"},
    Row{"public.mpeg-4", "video/mp4"},
    Row{"public.mpeg-4-audio", "audio/mp4"},
    Row{"public.plain-text", "text/plain"},
    Row{"public.png", "image/png"},
    Row{"public.python-script", "text/x-python"},
    Row{"public.rtf", "application/rtf"},
    Row{"public.shell-script", "application/x-shellscript"},
    Row{"public.svg-image", "image/svg+xml"},
    Row{"public.tar-archive", "application/x-tar"},
    Row{"public.text", "text/plain"},
    Row{"public.tiff", "image/tiff"},
    Row{"public.utf8-plain-text", "text/plain"},
    Row{"public.vcard", "text/vcard"},
    Row{"public.xml", "application/xml"},
    Row{"public.zip-archive", "application/zip"},
};
static_assert(std::ranges::is_sorted(kIdentifiers, {}, &Row::first));

struct FamilyRow {
  FileFamily family;
  std::string_view words;  ///< endings and parts of MIME types, between blanks
};
constexpr std::array kFamilies = {
    FamilyRow{FileFamily::folder, " inode/directory "},
    FamilyRow{FileFamily::image, " png jpg jpeg gif bmp tif tiff webp heic heif svg ico psd "},
    FamilyRow{FileFamily::audio, " mp3 wav m4a aac flac ogg opus aif aiff "},
    FamilyRow{FileFamily::video, " mp4 m4v mov avi mkv webm mpg mpeg wmv 3gp "},
    FamilyRow{
        FileFamily::archive,
        " zip tar gz tgz bz2 xz 7z rar alz egg dmg tar.gz tar.xz application/zip application/x-tar application/gzip "
        "application/vnd.rar application/x-7z-compressed application/x-bzip application/x-apple-diskimage "},
    FamilyRow{FileFamily::sheet,
              " xls xlsx ods numbers csv text/csv application/vnd.ms-excel "
              "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet "
              "application/vnd.oasis.opendocument.spreadsheet "
              "application/x-iwork-numbers-sffnumbers "},
    FamilyRow{FileFamily::slides,
              " ppt pptx odp key application/vnd.ms-powerpoint "
              "application/vnd.openxmlformats-officedocument.presentationml.presentation "
              "application/vnd.oasis.opendocument.presentation "
              "application/x-iwork-keynote-sffkey "},
    FamilyRow{
        FileFamily::document,
        " pdf doc docx odt hwp hwpx rtf pages application/pdf application/msword application/rtf application/x-hwp "
        "application/vnd.openxmlformats-officedocument.wordprocessingml.document "
        "application/vnd.oasis.opendocument.text application/x-iwork-pages-sffpages "},
    FamilyRow{FileFamily::text, " txt md log json xml html css js c h cpp py sh application/json application/xml "},
};

std::string lowercase(std::string_view text) {
  std::string result(text);
  for (char& character : result) character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  return result;
}

}  // namespace

port::FileType fileTypeOf(std::string_view type) {
  const std::string name = lowercase(type);
  if (name.starts_with('.')) return {{}, name.substr(1)};
  if (name.find('/') != std::string::npos) return {name, {}};
  const auto found = std::ranges::lower_bound(kIdentifiers, std::string_view(name), {}, &Row::first);
  if (found != kIdentifiers.end() && found->first == name) return {std::string(found->second), {}};
  return {{}, name};
}

FileFamily fileFamilyOf(const port::FileType& type) {
  const std::string word = ' ' + (type.mimeType.empty() ? type.extension : type.mimeType) + ' ';
  for (const FamilyRow& row : kFamilies)
    if (row.words.find(word) != std::string_view::npos) return row.family;
  for (const auto& [start, family] : {std::pair{"image/", FileFamily::image},
                                      {"audio/", FileFamily::audio},
                                      {"video/", FileFamily::video},
                                      {"text/", FileFamily::text}})
    if (type.mimeType.starts_with(start)) return family;
  return FileFamily::generic;
}

}  // namespace platform
