/* asynchronous.c - a query beside everything else that an event loop does.
 *
 * The session runs the query on a thread of its own. Its end makes a descriptor readable, which the
 * loop polls among its others; kestra_session_dispatch_events then calls back on this thread.
 *
 *     cc asynchronous.c $(pkg-config --cflags --libs kestra) -o asynchronous */
#include <kestra/kestra.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>

struct loop {
  int is_done;
  int turns; /* how often there was something else to do */
};

/* The value is the library's, and gone when this returns; kestra_value_copy would keep it. */
static void on_query_complete(void* context, kestra_value* value) {
  struct loop* loop = context;
  const char* text;
  if (kestra_value_as_string(value, &text, NULL) == KESTRA_OK) printf("%s files\n", text);
  loop->is_done = 1;
}

static int turn(kestra_session* session, int descriptor, struct loop* loop) {
  struct pollfd polled = {.fd = descriptor, .events = POLLIN};
  const int ready = poll(&polled, 1, 20); /* a real loop polls its other descriptors too */
  if (ready < 0) return 0;
  if (ready == 0) {
    ++loop->turns;
    return 1;
  }
  return kestra_session_dispatch_events(session, NULL) == KESTRA_OK;
}

int main(void) {
  const char* query = "SELECT COUNT(*) FROM Files(DirPath='/usr/share/doc', Levels=2).File";
  struct loop loop = {0, 0};
  kestra_session* session;
  intptr_t descriptor;
  int is_good;
  if (kestra_session_create(NULL, &session) != KESTRA_OK) return 1;
  is_good = kestra_session_set_query_complete(session, on_query_complete, &loop) == KESTRA_OK &&
            kestra_session_event_handle(session, &descriptor) == KESTRA_OK &&
            kestra_session_run_query(session, query, strlen(query), KESTRA_NO_TIMEOUT) == KESTRA_OK;
  while (is_good && !loop.is_done) is_good = turn(session, (int)descriptor, &loop);
  fprintf(stderr, "%d turns meanwhile\n", loop.turns);
  kestra_session_destroy(session);
  return is_good ? 0 : 1;
}
