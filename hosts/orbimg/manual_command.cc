// orbimg manual: what the program says of itself, for man(1) and for the shells.
#include <memory>
#include <ostream>

#include <hosts/orbimg/command.h>
#include <hosts/orbimg/command_tree.h>
#include <hosts/orbimg/completion.h>
#include <hosts/orbimg/manual_page.h>

namespace orb::host {
namespace {

std::string MakeText(std::string const& what, CommandNode const& program) {
  if (what == "bash") return MakeBashCompletion(program);
  if (what == "zsh") return MakeZshCompletion(program);
  return MakeManualPage(program, ORBIMG_VERSION);
}

}  // namespace

void AddManualCommand(CLI::App& app, CommandContext& context) {
  auto what = std::make_shared<std::string>("man");
  CLI::App* command = app.add_subcommand("manual", "Print the manual page, or completions for a shell");
  command
      ->add_option("what", *what,
                   "man: the manual page; bash, zsh: completions of options and subcommands (default: man)")
      ->check(CLI::IsMember({"man", "bash", "zsh"}));
  command->footer("Example: orbimg manual bash > ~/.local/share/bash-completion/completions/orbimg");
  command->callback([what, &app, &context] {
    context.run = [what, &app, &context] { context.out << MakeText(*what, DescribeCommand(app)); };
  });
}

}  // namespace orb::host
