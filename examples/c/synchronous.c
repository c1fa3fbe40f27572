/* synchronous.c - one query on the calling thread, its rows printed with their columns.
 *
 *     cc synchronous.c $(pkg-config --cflags --libs kestra) -o synchronous
 *     ./synchronous "SELECT PID, ImageName FROM Processes.Process WHERE PID < 100"
 *
 * Exit status: 0 there was a result, 1 the query gave an Error, 2 the library failed. */
#include <kestra/kestra.h>
#include <stdio.h>
#include <string.h>

/* The library fails only for want of memory and for misuse; an example may give up then. */
#define TRY(call)                             \
  do {                                        \
    if ((call) != KESTRA_OK) {                \
      fprintf(stderr, "%s: failed\n", #call); \
      return 2;                               \
    }                                         \
  } while (0)

/* What is not set is Undefined, and its text says so: <NULL>. */
static int print_value(kestra_value* value) {
  const char* text;
  size_t length;
  TRY(kestra_value_as_string(value, &text, &length));
  fwrite(text, 1, length, stdout);
  return 0;
}

static int print_headings(kestra_session* session) {
  kestra_columns* columns;
  int32_t count;
  const char* name;
  TRY(kestra_session_columns(session, &columns));
  TRY(kestra_columns_count(columns, &count));
  for (int32_t i = 0; i < count; ++i) {
    TRY(kestra_columns_name(columns, i, &name));
    printf(i == 0 ? "%s" : "\t%s", name);
  }
  if (count > 0) putchar('\n');
  return kestra_columns_release(columns) == KESTRA_OK ? 0 : 2;
}

/* A row of a SELECT list is a vector itself; any other row is a value. */
static int print_row(kestra_value* row) {
  kestra_values* cells;
  kestra_value* cell;
  int32_t count;
  int status = 0;
  if (kestra_value_as_vector(row, &cells) != KESTRA_OK) {
    status = print_value(row);
  } else {
    TRY(kestra_values_count(cells, &count));
    for (int32_t i = 0; i < count && status == 0; ++i) {
      if (i > 0) putchar('\t');
      TRY(kestra_values_value(cells, i, &cell));
      status = print_value(cell);
      kestra_value_release(cell);
    }
    kestra_values_release(cells);
  }
  putchar('\n');
  return status;
}

static int print_result(kestra_value* result) {
  kestra_values* rows;
  kestra_value* row;
  int32_t count;
  int status = 0;
  if (kestra_value_as_vector(result, &rows) != KESTRA_OK) { /* a single value */
    status = print_value(result);
    putchar('\n');
    return status;
  }
  TRY(kestra_values_count(rows, &count));
  for (int32_t i = 0; i < count && status == 0; ++i) {
    TRY(kestra_values_value(rows, i, &row));
    status = print_row(row);
    kestra_value_release(row);
  }
  kestra_values_release(rows);
  return status;
}

/* Where a text stops being a query, and what was probably meant. */
static void explain_error(kestra_session* session, const char* query) {
  kestra_diagnosis* diagnosis;
  const char* sentence;
  int32_t line;
  int32_t column;
  if (kestra_session_diagnose(session, query, strlen(query), &diagnosis) != KESTRA_OK) return;
  if (kestra_diagnosis_place(diagnosis, NULL, NULL, &line, &column) == KESTRA_OK &&
      kestra_diagnosis_message(diagnosis, &sentence) == KESTRA_OK) {
    fprintf(stderr, "line %d, column %d: %s\n", (int)line, (int)column, sentence);
  }
  kestra_diagnosis_release(diagnosis);
}

static int run(kestra_session* session, const char* query) {
  kestra_value* result;
  int32_t is_error;
  int status;
  TRY(kestra_session_run_query_sync(session, query, NULL, KESTRA_NO_TIMEOUT, &result));
  TRY(kestra_value_is_error(result, &is_error));
  if (is_error) {
    const char* text;
    TRY(kestra_value_as_string(result, &text, NULL));
    fprintf(stderr, "%s\n", text);
    explain_error(session, query);
    status = 1;
  } else {
    status = print_headings(session);
    if (status == 0) status = print_result(result);
  }
  kestra_value_release(result);
  return status;
}

int main(int argc, char** argv) {
  kestra_session* session;
  const char* query =
      argc > 1 ? argv[1]
               : "SELECT PID, ImageName, User FROM Processes(ShowUserAndComLine=1).Process";
  int status;
  if (kestra_session_create(NULL, &session) != KESTRA_OK) {
    fprintf(stderr, "no session: %s\n", kestra_create_error());
    return 2;
  }
  status = run(session, query);
  kestra_session_destroy(session);
  return status;
}
