/* What the tests ask of the functions of the interface that do nothing. */
#ifndef TESTS_CPP_STUB_INTERFACE_H
#define TESTS_CPP_STUB_INTERFACE_H

#include <tarva_abi.h>

#ifdef __cplusplus
extern "C" {
#endif

void stub_fail_next_read(void);
int stub_freed_errors(void);
int stub_ended_futures(void);

#ifdef __cplusplus
}
#endif

#endif
