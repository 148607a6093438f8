#include "option_changes.h"

namespace {

LSTATUS undo_change(option_change* change) {
  stored_value now;
  uint32_t number = 0;
  LSTATUS error = read_stored(change->name, &now);
  if (error != ERROR_SUCCESS) return error;
  if (number_of(now, &number) && number == change->number) error = write_stored(change->name, change->before);
  if (error == ERROR_SUCCESS) change->made = false;
  return error;
}

}  // namespace

LSTATUS make_changes(std::vector<option_change>* changes) {
  for (option_change& change : *changes) {
    LSTATUS error = read_stored(change.name, &change.before);
    if (error == ERROR_SUCCESS) error = write_number(change.name, change.number);
    if (error != ERROR_SUCCESS) {
      undo_changes(changes);
      return error;
    }
    change.made = true;
  }
  return ERROR_SUCCESS;
}

LSTATUS undo_changes(std::vector<option_change>* changes) {
  LSTATUS result = ERROR_SUCCESS;
  for (option_change& change : *changes) {
    const LSTATUS error = change.made ? undo_change(&change) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) result = error;
  }
  remove_empty_keys();
  return result;
}
