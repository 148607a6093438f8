#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "text.h"

namespace {

// The parser works on UTF-8; these are its targets until they are known to be good.
struct parsed_texts {
  std::string list, option, value, folder = ".", library;
};

std::string not_empty(const std::string& text) {
  return text.empty() ? "an empty name names nothing" : "";
}

void declare_run(CLI::App& app, request* result, parsed_texts* texts) {
  CLI::App* run = app.add_subcommand("run", "Start a program spread over the parts, and stay until it ends");
  run->footer("oswctl run [OPTIONS] -- PROGRAM ARGS...\nWhat stands behind -- is the program's own, as it is.");
  run->add_option("--parts", result->run.parts, "Split the desktop into 2 or 4 parts for this program")
      ->check(CLI::IsMember({2, 4}));
  CLI::Option* horizontal =
      run->add_flag("--horizontal", result->run.side_by_side, "Two parts lie side by side")->disable_flag_override();
  CLI::Option* vertical =
      run->add_flag("--vertical", result->run.stacked, "Two parts lie one above the other")->disable_flag_override();
  horizontal->excludes(vertical);
  run->add_option("--list", texts->list, "Use this application list in place of one that names just the program")
      ->check(not_empty);
}

void declare(CLI::App& app, request* result, parsed_texts* texts) {
  // A folder may begin with a slash.
  app.allow_windows_style_options(false);
  app.require_subcommand(1);
  declare_run(app, result, texts);
  app.add_subcommand("options", "Print the options, what they are set to and what they do");
  CLI::App* set = app.add_subcommand("set", "Set an option for every user of this machine");
  set->add_option("NAME", texts->option, "One of the names that \"oswctl options\" prints")->required();
  set->add_option("VALUE", texts->value, "The new value")->required();
  app.add_subcommand("reset", "Bring all options back to their defaults");
  CLI::App* check = app.add_subcommand("check", "Say whether a program's folder is ready");
  check->add_option("FOLDER", texts->folder, "The folder of the program, if it is not the current one")
      ->check(not_empty);
  CLI::App* install = app.add_subcommand("install", "Place both libraries beside a program");
  install->add_option("FOLDER", texts->folder, "The folder of the program")->required()->check(not_empty);
  CLI::App* remove = app.add_subcommand("remove", "Take away the libraries that install has placed");
  remove->add_option("FOLDER", texts->folder, "The folder of the program")->required()->check(not_empty);
  CLI::App* probe = app.add_subcommand("probe", "What check starts to try a driver in")->group("");
  probe->add_option("LIBRARY", texts->library)->required();
}

command chosen(const CLI::App& app) {
  static constexpr struct {
    const char* name;
    command what;
  } commands[] = {{"run", command::run},       {"options", command::options}, {"set", command::set},
                  {"reset", command::reset},   {"check", command::check},     {"install", command::install},
                  {"remove", command::remove}, {"probe", command::probe}};
  for (const auto& one : commands) {
    if (app.got_subcommand(one.name)) return one.what;
  }
  return command::help;
}

// Takes PROGRAM and ARGS off the end. Everything behind the first "--" belongs to the program, further "--" included,
// so the parser must not see it.
bool split_off_program(std::vector<std::wstring>* arguments, run_request* run) {
  const auto mark = std::find(arguments->begin(), arguments->end(), L"--");
  if (mark == arguments->end() || mark + 1 == arguments->end()) return false;
  run->program = *(mark + 1);
  run->args.assign(mark + 2, arguments->end());
  arguments->erase(mark, arguments->end());
  return !run->program.empty();
}

void take_texts(const parsed_texts& texts, request* result) {
  result->run.list = from_utf8(texts.list);
  result->option = from_utf8(texts.option);
  result->value = from_utf8(texts.value);
  result->folder = from_utf8(texts.folder);
  // "C:\Some folder\" arrives with its last quote, which the backslash in front of it has saved.
  if (result->folder.size() > 1 && result->folder.back() == L'"') result->folder.pop_back();
  result->library = from_utf8(texts.library);
}

}  // namespace

bool read_command_line(const std::vector<std::wstring>& arguments, request* result, std::wstring* problem) {
  std::vector<std::wstring> own = arguments;
  bool has_program = true;
  if (!own.empty() && own[0] == L"run") has_program = split_off_program(&own, &result->run);

  // The parser takes its arguments last first.
  std::vector<std::string> reversed;
  for (auto one = own.rbegin(); one != own.rend(); ++one) reversed.push_back(to_utf8(*one));

  CLI::App app("Switches the OpenGL span wrapper on for a program, and looks after its files and options.", "oswctl");
  parsed_texts texts;
  declare(app, result, &texts);
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    result->what = command::help;
    const auto asked = app.get_subcommands();
    result->help = from_utf8((asked.empty() ? &app : asked[0])->help());
    return true;
  } catch (const CLI::ParseError& error) {
    *problem = from_utf8(error.what()) + L"; \"oswctl --help\" tells what can be asked";
    return false;
  }
  if (!has_program) {
    *problem = L"run needs a program: oswctl run [OPTIONS] -- PROGRAM ARGS...";
    return false;
  }
  result->what = chosen(app);
  take_texts(texts, result);
  return true;
}
