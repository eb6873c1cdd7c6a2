#pragma once

#include <string>
#include <vector>

// The parser is a large header, and most of those that include this one never meet it.
namespace CLI {
class App;
class ParseError;
} // namespace CLI

/// What a person types and what the parser wants are not always the same.
namespace vrk {

/// "; did you mean 'wiper'?" if the word is nearly one of these, else empty. Case does not count.
std::string didYouMean(const std::string& word, const std::vector<std::string>& names);

/// The one of the names that the word is in any case; nullptr if it is none.
const std::string* nameInAnyCase(const std::string& word, const std::vector<std::string>& names);

/// The arguments behind the program's name, as the parser takes them: "help COMMAND" asks for the command's
/// help, and a part behind "--simulate" and a blank belongs to it, which for the parser is a flag.
/// \throws CommandError (usage) for a command that "help" does not know.
std::vector<std::string> readableArguments(const CLI::App& app, int argc, char** argv);

/// What is wrong with the arguments, and what to do next.
std::string usageError(const CLI::App& app, const CLI::ParseError& error);

} // namespace vrk
