// Pictures of scenes, spanned on both paths, against bypassed and against each other:
// test_pictures.exe PARTS [OPTION=VALUE]... GROUP|SCENE...
// Must be run spanned over PARTS parts. Three processes show the scenes: a copy of the program under a name that the
// application list does not have, which makes the reference, and this program once on each path. The options hold for
// the latter two.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "processes.h"
#include "scene.h"

namespace {

constexpr int scene_limit = 100;         // s
constexpr DWORD process_limit = 400000;  // ms
constexpr const char* path_option = "OSW_DW_GLDispatchUseMtPath";

const scene_group* const groups[] = {&drawing_scenes,      &pixel_scenes,   &object_scenes,  &window_scenes,
                                     &window_state_scenes, &monitor_scenes, &context_scenes, &thread_scenes,
                                     &pbuffer_scenes,      &mapping_scenes, &core_scenes};

struct option {
  std::string name;
  DWORD value;
};

struct choice {
  std::vector<option> options;
  std::vector<test_case> scenes;
  std::string words;  // for the processes that show them
};

// The scenes that a word names, one by itself or all of a group.
void add_scenes(choice* chosen, const char* word) {
  const size_t before = chosen->scenes.size();
  for (const scene_group* group : groups) {
    const bool all = strcmp(word, group->name) == 0;
    for (const test_case& scene : group->scenes) {
      if (all || strcmp(word, scene.name) == 0) chosen->scenes.push_back(scene);
    }
  }
  if (chosen->scenes.size() == before) {
    printf("there is no scene %s\n", word);
    exit(2);
  }
  chosen->words += std::string(" ") + word;
}

choice choose(int count, char** words) {
  choice chosen;
  for (int i = 0; i < count; ++i) {
    if (const char* sign = strchr(words[i], '=')) {
      const std::string name(words[i], static_cast<size_t>(sign - words[i]));
      chosen.options.push_back({name, static_cast<DWORD>(atoi(sign + 1))});
    } else {
      add_scenes(&chosen, words[i]);
    }
  }
  return chosen;
}

// A process of its own for one role. Result: whether all of its checks were good.
bool show_as(scene_role role, const std::string& program, int parts, const choice& chosen) {
  printf("as %s:\n", word_of(role));
  const std::string line = std::string(word_of(role)) + " " + std::to_string(parts) + chosen.words;
  const DWORD status = run_program(program, line, process_limit);
  if (status != good_status) printf("%s ended with status %lu\n", word_of(role), status);
  return status == good_status;
}

// The threaded path comes last, for it is compared with the sequential one, and may be left out of a scene that it does
// not show by its design.
bool show_on_both_paths(int parts, const choice& chosen) {
  const std::string program = program_folder() + program_name();
  for (const option& each : chosen.options) set_option(each.name.c_str(), each.value);
  set_option(path_option, 0);
  bool good = show_as(sequential_role, program, parts, chosen);
  set_option(path_option, 1);
  good &= show_as(threaded_role, program, parts, chosen);
  set_option(path_option, 0);
  for (const option& each : chosen.options) reset_option(each.name.c_str());
  return good;
}

int show_scenes(scene_role role, int count, char** words) {
  const choice chosen = choose(count - 3, words + 3);
  begin_scenes(role, role == reference_role ? 0 : atoi(words[2]));
  const int failed = run_cases(chosen.scenes.data(), static_cast<int>(chosen.scenes.size()), 1, words, scene_limit);
  return failed ? failed : static_cast<int>(good_status);
}

}  // namespace

int main(int count, char** words) {
  if (count < 3) {
    printf("usage: test_pictures PARTS [OPTION=VALUE]... GROUP|SCENE...\n");
    return 2;
  }
  for (scene_role role : {reference_role, sequential_role, threaded_role}) {
    if (strcmp(words[1], word_of(role)) == 0) return show_scenes(role, count, words);
  }
  const choice chosen = choose(count - 2, words + 2);
  const int parts = atoi(words[1]);
  const bool referred = show_as(reference_role, copy_of_this_program("reference.exe"), parts, chosen);
  return referred && show_on_both_paths(parts, chosen) && failed_checks == 0 ? 0 : 1;
}
