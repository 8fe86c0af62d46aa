#include "kelpctl/list.h"

#include "support/utf8.h"

namespace kelpctl {

void PrintList(const std::vector<Process>& processes, std::ostream& out) {
    for (const Process& process : processes) {
        out << app::ShowText(process.name) << " (process type " << process.proc_type << ")\n";
        for (const Command& command : process.commands) {
            out << "  " << app::ShowText(command.name) << " (" << command.code << ")";
            out << (command.help.empty() ? "" : "  ") << app::ShowText(command.help) << '\n';
            for (const auto& [name, meaning] : command.arguments) {
                out << "      " << app::ShowText(name) << "=  " << app::ShowText(meaning) << '\n';
            }
        }
    }
}

}  // namespace kelpctl
