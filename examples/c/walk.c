/* walk.c - items with everything below them: directories, their files, and what each one has.
 *
 *     cc walk.c $(pkg-config --cflags --libs kestra) -o walk
 *     ./walk /etc/apt */
#include <kestra/kestra.h>
#include <stdio.h>

/* A number has a unit and no text; every other kind has a text. */
static void print_param(kestra_param* param, int indent) {
  const char *name, *text, *unit;
  uint32_t number;
  int32_t type;
  if (kestra_param_name(param, &name) != KESTRA_OK || kestra_param_type(param, &type) != KESTRA_OK)
    return;
  if (type == KESTRA_TYPE_DWORD) {
    if (kestra_param_dword_value(param, &number) == KESTRA_OK &&
        kestra_param_unit(param, &unit) == KESTRA_OK)
      printf("%*s%s = %lu %s\n", indent, "", name, (unsigned long)number, unit);
  } else if (kestra_param_string_value(param, &text, NULL) == KESTRA_OK) {
    printf("%*s%s = %s\n", indent, "", name, text);
  }
}

/* What is not known is not in the list. */
static void print_params(kestra_item* item, int indent) {
  kestra_params* params;
  int32_t count;
  if (kestra_item_params(item, &params) != KESTRA_OK) return;
  kestra_params_count(params, &count);
  for (int32_t i = 1; i <= count; ++i) { /* lists of items and params count from 1 */
    kestra_param* param;
    if (kestra_params_item(params, i, &param) != KESTRA_OK) continue;
    print_param(param, indent);
    kestra_param_release(param);
  }
  kestra_params_release(params);
}

/* How deep a tree is, its module decides; this one is as deep as Levels says. */
static void walk(kestra_item* item, int depth) {
  kestra_items* children;
  const char* name;
  int32_t count;
  if (kestra_item_name(item, &name) == KESTRA_OK) printf("%*s%s\n", depth * 2, "", name);
  print_params(item, depth * 2 + 2);
  if (kestra_item_diag_items(item, &children) != KESTRA_OK) return;
  kestra_items_count(children, &count);
  for (int32_t i = 1; i <= count; ++i) {
    kestra_item* child;
    if (kestra_items_item(children, i, &child) != KESTRA_OK) continue;
    walk(child, depth + 1);
    kestra_item_release(child);
  }
  kestra_items_release(children);
}

static int walk_result(kestra_value* result) {
  kestra_values* rows;
  int32_t count;
  if (kestra_value_as_vector(result, &rows) != KESTRA_OK) return 1;
  kestra_values_count(rows, &count);
  for (int32_t i = 0; i < count; ++i) {
    kestra_value* row;
    kestra_item* item;
    if (kestra_values_value(rows, i, &row) != KESTRA_OK) continue;
    if (kestra_value_as_vdiag_item(row, &item) == KESTRA_OK) {
      walk(item, 0);
      kestra_item_release(item); /* the row may go before the item that was taken from it */
    }
    kestra_value_release(row);
  }
  kestra_values_release(rows);
  return 0;
}

int main(int argc, char** argv) {
  const char* directory = argc > 1 ? argv[1] : "/etc/apt";
  char query[4200];
  kestra_session* session;
  kestra_value* result;
  int status = 1;
  /* A quote inside a string is doubled; a name with one is refused here to keep this short. */
  for (const char* c = directory; *c; ++c) {
    if (*c == '\'') return 2;
  }
  /* The topmost directory alone: what is below it comes with it. */
  if (snprintf(query, sizeof(query),
               "SELECT * FROM Files(DirPath='%s', Levels=2).Directory WHERE Path = '%s'", directory,
               directory) >= (int)sizeof(query)) {
    return 2;
  }
  if (kestra_session_create(NULL, &session) != KESTRA_OK) return 1;
  if (kestra_session_run_query_sync(session, query, NULL, KESTRA_NO_TIMEOUT, &result) ==
      KESTRA_OK) {
    status = walk_result(result);
    kestra_value_release(result);
  }
  kestra_session_destroy(session);
  return status;
}
