#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace desktop {

// A program in a sandbox hands over files by a key, for which the portal (org.freedesktop.portal.FileTransfer) gives
// their names as others see them. To whoever reads contents that is a list of files like any other.

/// What an owner offers, with the list where there is a key and no list.
std::vector<std::string> withTransferredList(std::vector<std::string> offered);

/// Reads `type` with `read`; the list that only a key stands for from the portal, which is waited for a second at most.
std::optional<std::string> readWithTransfer(
    const std::string& type, const std::vector<std::string>& offered,
    const std::function<std::optional<std::string>(const std::string& type)>& read);

}  // namespace desktop
