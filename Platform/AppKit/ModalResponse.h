#pragma once

/// What ends a sheet or a modal session, beside what the program itself agrees on.
namespace platform::ModalResponse {

inline constexpr int kCancel = 0, kOK = 1;
inline constexpr int kStop = -1000;
/// Ended by something else than an answer: the window closed, the application stopped, or it could not begin.
inline constexpr int kAbort = -1001;

}  // namespace platform::ModalResponse
