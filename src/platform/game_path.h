#pragma once

#include <string>
#include <string_view>

namespace korvel {

// Pure helpers on the game's own (Windows) path texts: "\" separators, "X:" drive prefixes.

// The last "\"-separated component (the whole text when it holds no "\").
std::string FileNameOf(std::string_view path);
// Every component but the last, each followed by "\" (empty when the path holds no "\").
std::string FolderOf(std::string_view path);
// True when the second character is ":" (an absolute path on a drive).
bool isAbsoluteGamePath(std::string_view path);
// The folder with exactly one trailing "\" added when missing.
std::string withTrailingBackslash(std::string_view folder);
std::string withoutTrailingBackslash(std::string_view folder);
// A path component as Win32 opens it: trailing blanks and dots dropped ("TRUCKS.POD " names
// TRUCKS.POD); "." and ".." and a component of nothing else stay as they are.
std::string win32Name(std::string_view component);
// `folder` + "\" + `name`, without doubling the separator.
std::string joinGamePath(std::string_view folder, std::string_view name);

} // namespace korvel
