#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "text.h"
#include "version.h"

namespace {

// The parser works on UTF-8; these are its targets until they are known to be good.
struct parsed_texts {
  std::string list, option, value, folder = ".", driver, wrapper;
};

std::string not_empty(const std::string& text) {
  return text.empty() ? "an empty name names nothing" : "";
}

void declare_run(CLI::App* run, request* result, parsed_texts* texts) {
  run->footer("oswctl run [OPTIONS] [--] PROGRAM ARGS...\nWhat stands behind PROGRAM is the program's own, as it is.");
  run->add_option("--parts", result->run.parts, "Split the desktop into 2 or 4 parts for this program")
      ->check(CLI::IsMember({2, 4}));
  CLI::Option* horizontal =
      run->add_flag("--horizontal", result->run.side_by_side, "Two parts lie side by side")->disable_flag_override();
  CLI::Option* vertical =
      run->add_flag("--vertical", result->run.stacked, "Two parts lie one above the other")->disable_flag_override();
  horizontal->excludes(vertical);
  run->add_option("--list", texts->list, "Use this application list in place of one that names just the program")
      ->check(not_empty);
  run->add_flag("--basic", result->run.basic, "Start the program in the basic mode, with OpenGL up to 3.1")
      ->disable_flag_override();
  run->add_flag("--keep", result->run.keep, "Leave the libraries in the program's folder where they were not before")
      ->disable_flag_override();
}

void declare(CLI::App& app, request* result, parsed_texts* texts) {
  // A folder may begin with a slash.
  app.allow_windows_style_options(false);
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("oswctl ") + version);
  declare_run(app.add_subcommand("run", "Start a program spread over the parts, and stay until it ends"), result,
              texts);
  declare_run(app.add_subcommand("start", "What run starts where it has placed the libraries")->group(""), result,
              texts);
  app.add_subcommand("status", "Print the monitors, and the parts that a program started now would get");
  app.add_subcommand("list", "Print the running programs that are spread, with their windows and parts");
  app.add_subcommand("options", "Print the options, what they are set to and what they do");
  CLI::App* set = app.add_subcommand("set", "Set an option for every user of this machine");
  set->add_option("NAME", texts->option, "One of the names that \"oswctl options\" prints")->required();
  set->add_option("VALUE", texts->value, "The new value")->required();
  CLI::App* reset = app.add_subcommand("reset", "Take back what set has done");
  reset->add_flag("--all", result->all, "Delete all options, whoever has set them")->disable_flag_override();
  CLI::App* check = app.add_subcommand("check", "Draw with the libraries in a program's folder, and say what is found");
  check->add_option("FOLDER", texts->folder, "The folder of the program, if it is not the current one")
      ->check(not_empty);
  CLI::App* install = app.add_subcommand("install", "Place both libraries beside a program");
  install->add_option("FOLDER", texts->folder, "The folder of the program")->required()->check(not_empty);
  CLI::App* remove = app.add_subcommand("remove", "Take away the libraries that install has placed");
  remove->add_option("FOLDER", texts->folder, "The folder of the program")->required()->check(not_empty);
  CLI::App* probe = app.add_subcommand("probe", "What check starts to try libraries in")->group("");
  probe->add_option("DRIVER", texts->driver)->required();
  probe->add_option("WRAPPER", texts->wrapper);
}

constexpr struct {
  const char* name;
  command what;
  bool is_hidden;
} commands[] = {
    {"run", command::run, false},       {"start", command::start, true},      {"status", command::status, false},
    {"list", command::list, false},     {"options", command::options, false}, {"set", command::set, false},
    {"reset", command::reset, false},   {"check", command::check, false},     {"install", command::install, false},
    {"remove", command::remove, false}, {"probe", command::probe, true}};

command chosen(const CLI::App& app) {
  for (const auto& one : commands) {
    if (app.got_subcommand(one.name)) return one.what;
  }
  return command::text;
}

// Where run's own options end: at the first "--", or at the program's name.
size_t end_of_run_options(const std::vector<std::wstring>& arguments) {
  size_t i = 1;
  while (i < arguments.size() && arguments[i].starts_with(L'-') && arguments[i] != L"--") {
    // These have their value in the next argument.
    const bool takes_next = arguments[i] == L"--parts" || arguments[i] == L"--list";
    i += takes_next && i + 1 < arguments.size() && arguments[i + 1] != L"--" ? 2 : 1;
  }
  return i;
}

// Takes PROGRAM and ARGS off the end. They are the program's own, further "--" included, so the parser must not see
// them.
bool split_off_program(std::vector<std::wstring>* arguments, run_request* run) {
  const auto end = arguments->begin() + static_cast<ptrdiff_t>(end_of_run_options(*arguments));
  const auto program = end != arguments->end() && *end == L"--" ? end + 1 : end;
  if (program != arguments->end()) {
    run->program = *program;
    run->args.assign(program + 1, arguments->end());
  }
  run->own.assign(arguments->begin() + 1, end);
  arguments->erase(end, arguments->end());
  return !run->program.empty();
}

// The words that could have been meant in place of one that is none, as the end of a sentence.
std::wstring commands_to_choose_from() {
  std::wstring text;
  for (const auto& one : commands) {
    if (!one.is_hidden) text += (text.empty() ? L"" : L", ") + from_utf8(one.name);
  }
  return text;
}

std::wstring problem_of(const CLI::App& app, const std::vector<std::wstring>& arguments, const char* what) {
  if (arguments.empty()) return L"oswctl needs a command: " + commands_to_choose_from();
  const auto asked = app.get_subcommands();
  if (asked.empty() && !arguments[0].starts_with(L'-')) {
    return L"there is no command " + arguments[0] + L"; there are " + commands_to_choose_from();
  }
  return from_utf8(what) + L"; \"oswctl" + (asked.empty() ? L"" : L" " + from_utf8(asked[0]->get_name())) +
         L" --help\" tells what can be asked";
}

void take_texts(const parsed_texts& texts, request* result) {
  result->run.list = from_utf8(texts.list);
  result->option = from_utf8(texts.option);
  result->value = from_utf8(texts.value);
  result->folder = from_utf8(texts.folder);
  // "C:\Some folder\" arrives with its last quote, which the backslash in front of it has saved.
  if (result->folder.size() > 1 && result->folder.back() == L'"') result->folder.pop_back();
  result->driver = from_utf8(texts.driver);
  result->wrapper = from_utf8(texts.wrapper);
}

}  // namespace

bool read_command_line(const std::vector<std::wstring>& arguments, request* result, std::wstring* problem) {
  std::vector<std::wstring> own = arguments;
  bool has_program = true;
  if (!own.empty() && (own[0] == L"run" || own[0] == L"start")) has_program = split_off_program(&own, &result->run);

  // The parser takes its arguments last first.
  std::vector<std::string> reversed;
  for (auto one = own.rbegin(); one != own.rend(); ++one) reversed.push_back(to_utf8(*one));

  CLI::App app("Switches the OpenGL span wrapper on for a program, and looks after its files and options.", "oswctl");
  parsed_texts texts;
  declare(app, result, &texts);
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    result->what = command::text;
    const auto asked = app.get_subcommands();
    result->text = from_utf8((asked.empty() ? &app : asked[0])->help());
    return true;
  } catch (const CLI::CallForVersion& asked) {
    result->what = command::text;
    result->text = from_utf8(asked.what());
    return true;
  } catch (const CLI::ParseError& error) {
    *problem = problem_of(app, own, error.what());
    return false;
  }
  if (!has_program) {
    *problem = L"run needs a program: oswctl run [OPTIONS] [--] PROGRAM ARGS...";
    return false;
  }
  result->what = chosen(app);
  take_texts(texts, result);
  return true;
}
