/* cancel.c - ending a query that takes too long, in the three ways that there are.
 *
 *     cc cancel.c $(pkg-config --cflags --libs kestra) -pthread -o cancel
 *
 * A query that was ended is an Error without text. */
#include <kestra/kestra.h>
#include <pthread.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

/* Hours of work: for every pair of the files of a directory the directory is read again. A time-out
 * is looked at with each file that is read, a cancel everywhere. */
static const char* const kSlow =
    "SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') a WHERE 0 <= "
    "(SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') b WHERE LEN(a.FileName) <= "
    "(SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') c WHERE LEN(b.FileName) < LEN(c.FileName)))";

static double seconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static void nap(void) {
  const struct timespec half = {0, 500000000};
  nanosleep(&half, NULL);
}

/* From another thread: this and kestra_session_progress may be called from there. */
static void* cancel_soon(void* session) {
  nap();
  kestra_session_cancel_query(session);
  return NULL;
}

/* By a descriptor that becomes readable: a pipe here, as well an eventfd or a socket. */
static void* write_soon(void* end) {
  nap();
  if (write(*(const int*)end, "x", 1) != 1) perror("write");
  return NULL;
}

static int run(kestra_session* session, const char* how, const intptr_t* event, uint32_t timeout) {
  const double start = seconds();
  kestra_value* value;
  int32_t is_error = 0;
  if (kestra_session_run_query_sync(session, kSlow, event, timeout, &value) != KESTRA_OK) return 1;
  kestra_value_is_error(value, &is_error);
  kestra_value_release(value);
  printf("%s: %s after %.1f s\n", how, is_error ? "ended" : "it ran to its end", seconds() - start);
  return is_error ? 0 : 1;
}

int main(void) {
  kestra_session* session;
  pthread_t thread;
  int ends[2];
  int status = 1;
  if (pipe(ends) != 0 || kestra_session_create(NULL, &session) != KESTRA_OK) return 1;
  if (pthread_create(&thread, NULL, cancel_soon, session) == 0) {
    status = run(session, "kestra_session_cancel_query", NULL, KESTRA_NO_TIMEOUT);
    pthread_join(thread, NULL);
  }
  if (pthread_create(&thread, NULL, write_soon, &ends[1]) == 0) {
    const intptr_t event = ends[0]; /* polled, never read */
    status |= run(session, "a descriptor", &event, KESTRA_NO_TIMEOUT);
    pthread_join(thread, NULL);
  }
  status |= run(session, "a time-out", NULL, 500);
  kestra_session_destroy(session);
  return status;
}
