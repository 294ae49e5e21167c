// Exit codes of the program.
#pragma once

namespace orv::ExitCodes {

inline constexpr int Done = 0;
inline constexpr int AnalysisFailed = 1;  // refused or failed; the message is on standard error
inline constexpr int BadUsage = 2;
inline constexpr int FileError = 3;  // a file cannot be read or written
inline constexpr int Cancelled = 130;

}  // namespace orv::ExitCodes
