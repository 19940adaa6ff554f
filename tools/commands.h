#ifndef TERVIK_TOOLS_COMMANDS_H
#define TERVIK_TOOLS_COMMANDS_H

#include <string>
#include <vector>

namespace tervik::cli {

using Args = std::vector<std::string>;

// Each subcommand takes its own arguments (after the subcommand name) and returns the
// process exit status: 0 on success, 1 on a failure, 2 on a usage error.
int cmd_contour(const Args& args);
int cmd_stream(const Args& args);
int cmd_objan(const Args& args);
int cmd_diag(const Args& args);
int cmd_ensemble(const Args& args);
int cmd_sounding(const Args& args);
int cmd_demo(const Args& args);

// Options shared by the subcommands.
struct Common {
  bool quiet = false;
};
extern Common common;

// Prints "tervik: <message>" on standard error and returns 1.
int fail(const std::string& message);

// Takes an output option at args[k] if there is one: "-o FILE" / "--output FILE" into
// `output`, "--svg FILE" into `picture`. Advances k past the value and returns true when it
// took one; returns false (k unchanged) for anything else.
bool take_output_option(const Args& args, size_t& k, std::string& output, std::string& picture);

// False, with a message, when `path` names one of the `inputs`: outputs never replace inputs.
bool output_allowed(const std::string& path, const Args& inputs);

// Writes `text` to `path` through a temporary file, refusing to overwrite any of `inputs`.
bool write_output(const std::string& path, const std::string& text, const Args& inputs);

}  // namespace tervik::cli

#endif
