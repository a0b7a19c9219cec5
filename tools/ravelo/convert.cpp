// "ravelo convert IN OUT": reads a net and writes it in the format the
// output's extension names.
#include "commands.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {

int run_convert(const std::string& in, const std::string& out) {
    Session session;
    Progress progress(2);
    progress.step("reading");
    net_bn* net = session.read_net(in);
    progress.step("writing");
    session.write_net(net, out);
    return 0;
}

}  // namespace ravelo_cli
