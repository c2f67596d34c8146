#pragma once

#include <CLI/App.hpp>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace numera::tools {

/// One line that says what is wrong with the arguments, what was probably meant, and an example.
/// The arguments may hold any bytes.
std::string wrong_usage(const CLI::App& program, const CLI::ParseError& error);

/// The name that was probably meant by `word`: the one that it is the start of, or that differs
/// from it in one letter or two; "" if there is none.
std::string likely_name(std::string_view word, const std::vector<std::string>& names);

/// "there is no format 'cvs'; did you mean 'csv'?", or all names if none of them is likely. `kind`
/// is what is named.
std::string no_such_name(const std::string& kind, const std::string& word,
                         const std::vector<std::string>& names);

}  // namespace numera::tools
