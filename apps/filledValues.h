#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace vrk {

/// An option that was given must say something: an empty file name comes from a variable of a shell that was
/// never set, and work without the file would look like work with it. Call it once all options are there.
/// \param free the long name of the one option whose text may be empty
inline void refuseEmptyValues(CLI::App& app, const std::string& free = {}) {
    for (CLI::Option* option : app.get_options([](const CLI::Option*) { return true; }))
        if (option->get_items_expected_min() > 0 && !option->get_lnames().empty() &&
            !option->check_lname(free))
            option->check([](const std::string& text) {
                return text.empty() ? std::string("the value is empty") : std::string();
            });
    for (CLI::App* inner : app.get_subcommands([](const CLI::App*) { return true; }))
        refuseEmptyValues(*inner, free);
}

} // namespace vrk
