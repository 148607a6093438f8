// Scans of a fixed table of records, each under the table's lock, which is held for nothing else.
#pragma once

#include <windows.h>

// The first record whose field `key` equals `wanted`, or null.
template <class Record, int count, class Key>
Record* find_slot(Record (&records)[count], CRITICAL_SECTION* lock, Key Record::*key, Key wanted) {
  Record* found = nullptr;
  EnterCriticalSection(lock);
  for (Record& record : records) {
    if (record.*key != wanted) continue;
    found = &record;
    break;
  }
  LeaveCriticalSection(lock);
  return found;
}

// Replaces the first record whose field `key` equals `wanted`; when there is none, nothing.
template <class Record, int count, class Key>
void write_slot(Record (&records)[count], CRITICAL_SECTION* lock, Key Record::*key, Key wanted, const Record& value) {
  EnterCriticalSection(lock);
  for (Record& record : records) {
    if (record.*key != wanted) continue;
    record = value;
    break;
  }
  LeaveCriticalSection(lock);
}
