// The ravelo command-line program. Exit codes: 0 success, 1 a runtime failure (a file that can't
// be read or written, a finding the engine refuses), 2 a wrong command line (unknown command,
// option, node or state).
#include <CLI/CLI.hpp>

#include <cstdio>

#include "commands.h"
#include "session.h"
#include "suggest.h"

namespace {

std::string version_text() {
    const char* version = nullptr;
    ravelo_cli::Session session;
    GetRaveloVersion_bn(session.env(), &version);
    return std::string("ravelo ") + (version ? version : "");
}

// A first argument that is neither an option nor a command is a mistyped command.
bool refuse_unknown_command(const CLI::App& app, int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') return false;
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
        if (names.back() == argv[1]) return false;
    }
    std::string hint = ravelo_cli::did_you_mean(argv[1], names);
    ravelo_cli::complain("unknown command '" + std::string(argv[1]) + "'" +
                         (hint.empty() ? "; the commands are " + ravelo_cli::quoted_list(names) : hint));
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"ravelo: Bayesian belief and decision networks from the command line", "ravelo"};
    app.require_subcommand(1);
    app.footer("Exit codes: 0 success, 1 a file or the engine failed, 2 a wrong command line.");
    app.set_version_flag("--version", version_text, "Print the program's version and exit");

    std::vector<ravelo_cli::Command> commands = {
        ravelo_cli::add_info(app),
        ravelo_cli::add_convert(app),
        ravelo_cli::add_beliefs(app),
        ravelo_cli::add_mpe(app),
        ravelo_cli::add_batch(app),
        ravelo_cli::add_draw(app),
    };

    try {
        if (refuse_unknown_command(app, argc, argv)) return ravelo_cli::kUsageFailure;
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return ravelo_cli::kUsageFailure;
    } catch (const std::runtime_error&) {  // a session that could not start, already explained
        return ravelo_cli::kRuntimeFailure;
    }
    try {
        for (const ravelo_cli::Command& command : commands)
            if (command.app->parsed()) return command.run();
    } catch (const ravelo_cli::UsageFailed&) {
        return ravelo_cli::kUsageFailure;  // already explained on standard error
    } catch (const ravelo_cli::CommandFailed&) {
        return ravelo_cli::kRuntimeFailure;
    }
    return 0;
}
