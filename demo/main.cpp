#include <cstdio>

#include "load_model.h"
#include "options.h"
#include "window.h"

int main(int count, char** words) {
  options chosen;
  int status;
  if (!read_options(count, words, &chosen, &status)) return status;

  model shown;
  std::string why;
  if (!load_model(chosen.model, &shown, &why)) {
    fprintf(stderr, "viewer: %s: %s\n", chosen.model.c_str(), why.c_str());
    return 1;
  }
  return show_model(chosen, shown);
}
