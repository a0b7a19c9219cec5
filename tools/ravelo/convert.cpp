// "ravelo convert IN OUT": reads a net and writes it in the format the output's extension names;
// "-" stands for standard input or output, in the format --from or --to names.
#include "commands.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {

Command add_convert(CLI::App& program) {
    struct Arguments {
        std::string in, out, from, to;
    };
    auto args = std::make_shared<Arguments>();
    CLI::App* command = program.add_subcommand("convert", "Convert a net to the format OUT's extension names");
    command->add_option("IN", args->in, "Net file to read, or - for standard input")->required();
    command->add_option("OUT", args->out, "Net file to write, or - for standard output")->required();
    command->add_option("--from", args->from,
                        std::string("Format of standard input: ") + kReadFormats + " (default dne)");
    command->add_option("--to", args->to, std::string("Format of standard output: ") + kWriteFormats);
    return {command, [args] {
                if (args->out == "-" && args->to.empty())
                    usage_failure(std::string("writing to standard output needs --to FORMAT, one of ") + kWriteFormats);
                refuse_unknown_extension(args->out, true);  // before the work of reading
                Session session;
                Progress progress(2);
                progress.step("reading");
                net_bn* net = session.read_net(args->in, args->from);
                progress.step("writing");
                progress.finish();
                session.write_net(net, args->out, args->to);
                return 0;
            }};
}

}  // namespace ravelo_cli
