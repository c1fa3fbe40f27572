/* A host written in C: the header compiles as C, and the library does what it says. Prints what is
 * wrong, and exits with the number of faults. */
#include <stdio.h>
#include <string.h>

#include "kestra/kestra.h"

static int faults = 0;

static void expect(int condition, const char* what) {
  if (condition) return;
  ++faults;
  printf("wrong: %s\n", what);
}

static void expect_count_of_processes(kestra_session* session) {
  kestra_value* value = NULL;
  int32_t is_number = 0;
  int32_t count = 0;
  expect(kestra_session_run_query_sync(session, "SELECT COUNT(*) FROM Processes.Process", NULL,
                                       KESTRA_NO_TIMEOUT, &value) == KESTRA_OK,
         "the query is run");
  expect(kestra_value_is_number(value, &is_number) == KESTRA_OK && is_number == 1, "a number");
  expect(kestra_value_as_long(value, &count) == KESTRA_OK && count >= 1, "there is a process");
  kestra_value_release(value);
}

static void expect_modules(kestra_session* session) {
  kestra_class* root = NULL;
  const char* name = NULL;
  int32_t count = 0;
  expect(kestra_session_root_class(session, &root) == KESTRA_OK, "there is a class tree");
  expect(kestra_class_name(root, &name) == KESTRA_OK && strcmp(name, "Root") == 0, "its name");
  expect(kestra_class_child_count(root, &count) == KESTRA_OK && count == 53, "53 modules");
  kestra_class_release(root);
}

int main(void) {
  kestra_session* session = NULL;
  kestra_options options = {0};
  options.struct_size = sizeof(options);
  expect(kestra_abi_version() == KESTRA_ABI_VERSION, "the version of the interface");
  expect(kestra_version()[0] != '\0', "the version of the library");
  expect(kestra_session_create(&options, &session) == KESTRA_OK, "a session");
  expect_count_of_processes(session);
  expect_modules(session);
  kestra_session_destroy(session);
  return faults;
}
