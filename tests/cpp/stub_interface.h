// What the tests ask of the functions of the interface that do nothing.
#pragma once

#include <tarva_abi.h>

struct stub_record {
  bool next_read_fails;
  int freed_errors, ended_futures;
};
extern stub_record stub;
