/* kestra.h - the C interface of libkestra.
 *
 * A host makes a session, runs queries in it, and reads typed values back:
 *
 *   kestra_session* session;
 *   kestra_value* value;
 *   kestra_session_create(NULL, &session);
 *   kestra_session_run_query_sync(session, "SELECT COUNT(*) FROM Processes.Process",
 *                                 NULL, KESTRA_NO_TIMEOUT, &value);
 *   int32_t count;
 *   kestra_value_as_long(value, &count);
 *   kestra_value_release(value);
 *   kestra_session_destroy(session);
 *
 * Rules that hold for every function:
 *
 * - It returns a status. KESTRA_OK is 0; every other status is negative, and what the function
 *   would have given out is then untouched or null. A query that fails is no failing function: its
 *   outcome is a value for which kestra_value_is_error is true.
 * - Text is UTF-8. Text that goes in ends with a NUL unless a length is given with it. Text that
 *   comes out is a `const char*` owned by the object that gave it, valid until the object is
 *   released; it may hold NUL bytes of its own, and where that can be, a length comes with it.
 * - A handle that a function gives out belongs to the caller, who releases it with the function of
 *   its kind, which a null does not mind. Every handle keeps alive what it needs: a value may be
 *   released before the items that were taken from it, and a session before its values.
 * - Handles of results (values, items, params and their lists) may be read from any thread, one
 *   thread at a time per handle. A session's functions are called from the thread that made it;
 *   only kestra_session_cancel_query and kestra_session_progress may be called from any thread. Any
 *   other that is called while another thread is in the session does nothing: KESTRA_E_BUSY.
 * - Nothing is thrown across this interface, and no input ends the process.
 *
 * The interface is versioned: KESTRA_ABI_VERSION is raised when something is taken away or changes
 * its meaning. Functions may be added without that.
 */
#ifndef KESTRA_KESTRA_H
#define KESTRA_KESTRA_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define KESTRA_API
#else
#define KESTRA_API __attribute__((visibility("default")))
#endif

#define KESTRA_ABI_VERSION 1
#define KESTRA_NO_TIMEOUT 0xFFFFFFFFu

typedef int32_t kestra_status;
#define KESTRA_OK 0
#define KESTRA_E_FAIL (-1)       /* could not be done */
#define KESTRA_E_POINTER (-2)    /* a null handle, a null text or a null place for a result */
#define KESTRA_E_INVALIDARG (-3) /* an index outside, an option that does not exist */
#define KESTRA_E_OUTOFMEMORY (-4)
#define KESTRA_E_NOTFOUND (-5) /* no such name */
#define KESTRA_E_BUSY (-6)     /* another thread is in a function of the session */

typedef struct kestra_session kestra_session;
typedef struct kestra_value kestra_value;
typedef struct kestra_values kestra_values;
typedef struct kestra_item kestra_item;
typedef struct kestra_items kestra_items;
typedef struct kestra_param kestra_param;
typedef struct kestra_params kestra_params;
typedef struct kestra_columns kestra_columns;
typedef struct kestra_class kestra_class;
typedef struct kestra_diagnosis kestra_diagnosis;
typedef struct kestra_completions kestra_completions;

/* The numbers of the declared types. */
#define KESTRA_TYPE_STRING 1
#define KESTRA_TYPE_DWORD 2
#define KESTRA_TYPE_ENUM 3
#define KESTRA_TYPE_BITMASK 4
#define KESTRA_TYPE_DATIME 5
#define KESTRA_TYPE_VERSION 6

/* The version of the library, such as "0.1.0", and of the interface. */
KESTRA_API const char* kestra_version(void);
KESTRA_API int32_t kestra_abi_version(void);

/* ---- Session ---- */

/* Where a session's results come from. Null in place of the struct, and null members, mean the
 * defaults. struct_size is sizeof(kestra_options), so that members can be added;
 * KESTRA_E_INVALIDARG where it was left at 0, and where a member is set that a later header has and
 * this library does not know. */
typedef struct kestra_options {
  size_t struct_size;
  const char* log_directory; /* of this process's log; takes effect for the first session only */
  /* The directory where results are kept for queries that ask for it (FROM Processes#60.Process: at
   * most 60 seconds old). A relative path counts from the current directory of this call. It is
   * made when it is first needed. Null or empty: the environment variable KESTRA_CacheDir, or none.
   */
  const char* cache_directory;
  /* Ask about the Windows system whose volume is in this directory (a mounted disk, a prefix of
   * Wine, the drive_c of one) instead of this machine. It is only read: every change fails with
   * system error 19. There are no plug-ins and no cache then, since both speak of this machine:
   * KESTRA_E_INVALIDARG with a cache_directory, and for an empty text. */
  const char* image_directory;
  /* Whose registry HKEY_CURRENT_USER is there: a user's name or SID. Null: the only user's.
   * KESTRA_E_INVALIDARG without an image_directory. */
  const char* image_user;
} kestra_options;

/* KESTRA_E_FAIL while the process has no descriptor left, KESTRA_E_NOTFOUND for an image_directory
 * that holds no Windows system, and for an image_user that it does not know: kestra_create_error
 * tells. */
KESTRA_API kestra_status kestra_session_create(const kestra_options* options,
                                               kestra_session** session);
/* Why the last kestra_session_create of this thread failed, as a sentence; empty if there is
 * nothing to say. Valid until the thread's next one. */
KESTRA_API const char* kestra_create_error(void);
/* What the session's machine has to say beside its answers, one sentence at a time, each told once:
 * a registry hive that is damaged, or that was not closed. KESTRA_E_NOTFOUND when there is nothing
 * new. Valid until the next call for the session. Worth a look after each query. */
KESTRA_API kestra_status kestra_session_next_notice(kestra_session* session, const char** text);
/* Waits up to ten seconds for what still runs. A null session is allowed. KESTRA_E_BUSY, and
 * nothing is destroyed, while another thread is in the session. */
KESTRA_API kestra_status kestra_session_destroy(kestra_session* session);

/* Whether active statements may change the machine. 0 at first. */
KESTRA_API kestra_status kestra_session_allow_active(kestra_session* session, int32_t allow);

/* Runs one query on the calling thread. termination_event, if not null, points to a descriptor
 * that becomes readable when the query is to end, as the end of a pipe also does when the other end
 * is closed; it is polled, never read, and stays the caller's. One that is readable already ends
 * the query at once; one that is not open never does. Without one, kestra_session_cancel_query ends
 * the query. A query that was ended is an error whose text is "<ERROR>". timeout_ms 0 only parses,
 * and KESTRA_NO_TIMEOUT waits for ever. The time is looked at before a module is filled and while
 * rows are looked at: a module that is filling is ended by a cancel alone. */
KESTRA_API kestra_status kestra_session_run_query_sync(kestra_session* session, const char* query,
                                                       const intptr_t* termination_event,
                                                       uint32_t timeout_ms, kestra_value** result);
/* The same for a text of length bytes, which may hold NUL bytes. */
KESTRA_API kestra_status kestra_session_run_query_sync_n(kestra_session* session, const char* query,
                                                         size_t length,
                                                         const intptr_t* termination_event,
                                                         uint32_t timeout_ms,
                                                         kestra_value** result);
/* good is -1 for a text that parses and 0 for one that does not. Nothing is run. */
KESTRA_API kestra_status kestra_session_check_query_syntax(kestra_session* session,
                                                           const char* query, size_t length,
                                                           int32_t* good);
/* Ends the queries that run, a synchronous one only if it has no termination_event. From any
 * thread, while the session exists. Waits up to ten seconds for the thread of an asynchronous one,
 * which then announces nothing. It says nothing to a query that begins later: what is cancelled
 * before it has begun runs. */
KESTRA_API kestra_status kestra_session_cancel_query(kestra_session* session);
/* Forgets what modules were filled with; results that are held stay as they are. */
KESTRA_API kestra_status kestra_session_reinit_diag_root(kestra_session* session);
/* Adds the modules of the plug-ins in a directory (see plugin.h), in place of those of the last
 * one; a plug-in's module replaces a built-in one of its name. Modules are made anew at the next
 * query. The libraries are loaded for a moment here, so the directory must be one that the host
 * trusts. KESTRA_E_NOTFOUND for a path that is no directory: nothing has changed then.
 * KESTRA_E_FAIL for one that cannot be read: every query fails until another one is set or the
 * plug-ins are cleared. KESTRA_E_INVALIDARG for a session over an image_directory. */
KESTRA_API kestra_status kestra_session_set_plugins_dir(kestra_session* session,
                                                        const char* directory);
/* Back to the built-in modules alone. */
KESTRA_API kestra_status kestra_session_clear_plugins(kestra_session* session);
/* Why the last query of this session failed, where the value itself does not say: the sentence of
 * its message, empty if there is none. Valid until the session's next query. */
KESTRA_API kestra_status kestra_session_last_message(kestra_session* session, const char** text);

/* ---- Asynchronous queries ----
 *
 * A session runs one query at a time on a thread of its own. The end is announced through a handle
 * that an event loop polls; the host then calls kestra_session_dispatch_events on the thread that
 * made the session, and the callback is called from there. */

/* value belongs to the library and is released when the callback returns; kestra_value_copy keeps
 * it. The callback may call the session, and may destroy it. */
typedef void (*kestra_query_complete)(void* context, kestra_value* value);

KESTRA_API kestra_status kestra_session_set_query_complete(kestra_session* session,
                                                           kestra_query_complete callback,
                                                           void* context);
/* KESTRA_E_FAIL while the query before is not dispatched yet, and after
 * kestra_session_disable_async_mode. A query that is cancelled announces nothing. */
KESTRA_API kestra_status kestra_session_run_query(kestra_session* session, const char* query,
                                                  size_t length, uint32_t timeout_ms);
/* A handle (a descriptor on Linux) that is readable while something waits to be dispatched. Poll it
 * and do not read it. It stays the session's, and ends with it or with
 * kestra_session_disable_async_mode, after which there is none: KESTRA_E_FAIL. */
KESTRA_API kestra_status kestra_session_event_handle(kestra_session* session, intptr_t* handle);
/* Calls the callback for what waits. count, which may be null, gets how many calls there were. */
KESTRA_API kestra_status kestra_session_dispatch_events(kestra_session* session, int32_t* count);
/* From here on kestra_session_run_query fails. */
KESTRA_API kestra_status kestra_session_disable_async_mode(kestra_session* session);
/* Starts filling a module on a thread of its own, ahead of the query that will ask for it; nobody
 * is told of the end. args is an argument text such as "Levels=1,Path='a,b'", or null. A module
 * that is filled stays as it is unless init_always is not 0. KESTRA_E_POINTER for a module that
 * there is not, and for arguments that do not fit. */
KESTRA_API kestra_status kestra_session_init_diag_module(kestra_session* session,
                                                         const char* module_name, const char* args,
                                                         int32_t init_always);

/* ---- Value ---- */

KESTRA_API kestra_status kestra_value_release(kestra_value* value);
/* A handle of its own to the same value. */
KESTRA_API kestra_status kestra_value_copy(const kestra_value* value, kestra_value** copy);
/* Each answers 1 or 0. An enumeration is a number and a string at once. */
KESTRA_API kestra_status kestra_value_is_undefined(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_error(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_boolean(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_number(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_string(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_datime(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_vdiag_item(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_is_vector(const kestra_value* value, int32_t* result);
/* 0 for a value of another kind. */
KESTRA_API kestra_status kestra_value_as_bool(const kestra_value* value, int32_t* result);
KESTRA_API kestra_status kestra_value_as_long(const kestra_value* value, int32_t* result);
/* Seconds since 1970-01-01 00:00:00 UTC. */
KESTRA_API kestra_status kestra_value_as_datime(const kestra_value* value, uint32_t* result);
/* The text form, for every kind. length may be null. */
KESTRA_API kestra_status kestra_value_as_string(kestra_value* value, const char** text,
                                                size_t* length);
/* KESTRA_E_POINTER for a value of another kind. */
KESTRA_API kestra_status kestra_value_as_vdiag_item(const kestra_value* value, kestra_item** item);
KESTRA_API kestra_status kestra_value_as_vector(const kestra_value* value, kestra_values** values);
/* The parameter that a value is a property of; KESTRA_E_NOTFOUND for a value that was computed. */
KESTRA_API kestra_status kestra_value_as_param(const kestra_value* value, kestra_param** param);

/* ---- Values ---- */

KESTRA_API kestra_status kestra_values_release(kestra_values* values);
KESTRA_API kestra_status kestra_values_count(const kestra_values* values, int32_t* count);
/* number counts from 0. */
KESTRA_API kestra_status kestra_values_value(const kestra_values* values, int32_t number,
                                             kestra_value** value);

/* ---- Item ---- */

KESTRA_API kestra_status kestra_item_release(kestra_item* item);
KESTRA_API kestra_status kestra_item_name(kestra_item* item, const char** name);
KESTRA_API kestra_status kestra_item_diag_items(kestra_item* item, kestra_items** items);
KESTRA_API kestra_status kestra_item_params(kestra_item* item, kestra_params** params);
/* Fills the item, also one that is filled already; result is -1 for success and 0 for failure. Its
 * former children go, so nobody may be reading below it meanwhile, a query of the session
 * included. */
KESTRA_API kestra_status kestra_item_init(kestra_item* item, int32_t init_child, int32_t* result);
/* The item and everything below it as text. format: 0 XML for reading, with units and option texts;
 * 1 XML with raw numbers; 2 and 3 one line per item; 4 sections, as in a data file. Any other gives
 * the empty text. length may be null. Valid until the item's next dump or its release. */
KESTRA_API kestra_status kestra_item_xml_dump(kestra_item* item, int32_t format, const char** text,
                                              size_t* length);
/* The class of the item. */
KESTRA_API kestra_status kestra_item_class(kestra_item* item, kestra_class** diag_class);

/* ---- Lists of items and params; index counts from 1 ---- */

KESTRA_API kestra_status kestra_items_release(kestra_items* items);
KESTRA_API kestra_status kestra_items_count(const kestra_items* items, int32_t* count);
KESTRA_API kestra_status kestra_items_item(const kestra_items* items, int32_t index,
                                           kestra_item** item);
KESTRA_API kestra_status kestra_params_release(kestra_params* params);
KESTRA_API kestra_status kestra_params_count(const kestra_params* params, int32_t* count);
KESTRA_API kestra_status kestra_params_item(const kestra_params* params, int32_t index,
                                            kestra_param** param);
/* The property of that name, in any case; KESTRA_E_NOTFOUND for one that is not set. */
KESTRA_API kestra_status kestra_params_find(const kestra_params* params, const char* name,
                                            kestra_param** param);

/* ---- Param ---- */

KESTRA_API kestra_status kestra_param_release(kestra_param* param);
KESTRA_API kestra_status kestra_param_name(const kestra_param* param, const char** name);
KESTRA_API kestra_status kestra_param_string_value(kestra_param* param, const char** text,
                                                   size_t* length);
KESTRA_API kestra_status kestra_param_dword_value(const kestra_param* param, uint32_t* number);
KESTRA_API kestra_status kestra_param_type(const kestra_param* param, int32_t* type);
/* What a KESTRA_TYPE_DWORD counts, such as "KB"; empty where there is no unit. */
KESTRA_API kestra_status kestra_param_unit(const kestra_param* param, const char** unit);

/* ---- Columns of a result ---- */

/* The names of the columns of the session's last result: for SELECT x, y the parameter's name or
 * the expression's text, with the alias where two would be equal. For a result that has no columns
 * of its own (SELECT *, a bare expression, a batch) count is 0. */
KESTRA_API kestra_status kestra_session_columns(kestra_session* session, kestra_columns** columns);
KESTRA_API kestra_status kestra_columns_release(kestra_columns* columns);
KESTRA_API kestra_status kestra_columns_count(const kestra_columns* columns, int32_t* count);
/* number counts from 0. */
KESTRA_API kestra_status kestra_columns_name(const kestra_columns* columns, int32_t number,
                                             const char** name);

/* ---- What happened: the sources of a result ---- */

/* Where the content of a source came from that the last query read. */
#define KESTRA_FILL_MACHINE 0    /* it was filled for this query */
#define KESTRA_FILL_MEMORY 1     /* it was filled before, in this session */
#define KESTRA_FILL_CACHE_FILE 2 /* it was read from the cache directory */

/* Whether a module can have anything to show. */
#define KESTRA_MODULE_READY 0
#define KESTRA_MODULE_NOT_BUILT 1 /* it is declared, and fills to nothing */
#define KESTRA_MODULE_NOT_HERE 2  /* the session's machine has nothing of what it shows */

/* One source of the last query: a module with its arguments, or a built-in source with its path
 * (name "FILES.FILE", arguments the path as it is written in a query). A source that is asked
 * several times in one query is one entry, with its numbers added up and the rest as it was the
 * first time; behind a thousand entries those of one name share one, whose arguments are "...". A
 * join by parent has no entry for its right side, which is children of the rows on its left.
 * struct_size is sizeof(kestra_source_info), set by the caller: members that it has no room for are
 * left out, and members that the library does not know yet stay as they are. The texts are valid
 * until the session's next query. */
typedef struct kestra_source_info {
  size_t struct_size;
  const char* name;      /* "Processes", "FILES.FILE" */
  const char* arguments; /* those that differ from their defaults, as they are written in a query */
  int32_t fill;          /* KESTRA_FILL_... */
  int32_t state;         /* KESTRA_MODULE_... */
  int32_t is_filled;     /* 0: it could not be filled, and what asked for it is an Error */
  int32_t is_cut_short; /* not 0: a time limit or a cancel ended the reading before its end; what is
                           so is not kept in a cache file */
  uint32_t age_seconds; /* of content out of a cache file or of memory, when the query read it */
  int32_t problem_count; /* what could not be read when the content was made */
  uint64_t rows_seen;    /* items of the class that were looked at */
  uint64_t rows_kept;    /* those of them that the WHERE of the clause let pass */
  uint64_t microseconds; /* for finding or filling the content, and looking at its rows, with the
                            sub-selects that the WHERE asks for each of them */
  /* Of the problems, those for which there may be items that are not seen (a directory that may not
   * be listed); the others left properties unset. */
  int32_t hiding_count;
} kestra_source_info;

KESTRA_API kestra_status kestra_session_source_count(kestra_session* session, int32_t* count);
/* number counts from 0, here and below. */
KESTRA_API kestra_status kestra_session_source(kestra_session* session, int32_t number,
                                               kestra_source_info* info);
/* What could not be read while a source was filled for this query: subject is a path, a process or
 * whatever else was asked, and reason a sentence. At most 100 of one source are kept; problem_count
 * tells of all, and is all there is of content from memory or a cache file. Valid until the
 * session's next query. */
KESTRA_API kestra_status kestra_session_source_problem(kestra_session* session, int32_t number,
                                                       int32_t problem, const char** subject,
                                                       const char** reason);
/* How long the last query took as a whole, and the part of it until it was known what the text
 * means, in microseconds. Each place may be null. */
KESTRA_API kestra_status kestra_session_query_times(kestra_session* session,
                                                    uint64_t* parse_microseconds,
                                                    uint64_t* total_microseconds);
/* How a text would be run, as lines of text for a reader: its sources with their arguments, the
 * joins and how each finds its rows, and which condition is tested where. Nothing is run.
 * KESTRA_E_INVALIDARG for a text that does not parse. Valid until the session's next query or
 * explanation. */
KESTRA_API kestra_status kestra_session_explain(kestra_session* session, const char* query,
                                                size_t length, const char** text);

/* What the query that runs is doing. From any thread. what, of size bytes, gets a short text ending
 * with a NUL, cut at the end of a character ("Processes", "FILES.FILE: /usr/share"); done and total
 * tell how far it is, in units of its own, total being 0 where that is not known. Each place may be
 * null. KESTRA_E_NOTFOUND while nothing runs that has something to tell. */
KESTRA_API kestra_status kestra_session_progress(kestra_session* session, char* what, size_t size,
                                                 uint64_t* done, uint64_t* total);

/* ---- Why a text is no query, and what may stand in it ---- */

/* What is wrong with a text, or suspicious in it. Nothing is run. KESTRA_E_NOTFOUND for a text of
 * which there is nothing to say. Of a text that parses it tells what its author will probably not
 * have meant (an unknown class or argument of a module, a "%" in LIKE where "*" is the wildcard).
 */
KESTRA_API kestra_status kestra_session_diagnose(kestra_session* session, const char* query,
                                                 size_t length, kestra_diagnosis** diagnosis);
KESTRA_API kestra_status kestra_diagnosis_release(kestra_diagnosis* diagnosis);
/* 1: the text is no query or fails whenever it is run; 0: it can be run. */
KESTRA_API kestra_status kestra_diagnosis_is_error(const kestra_diagnosis* diagnosis,
                                                   int32_t* result);
/* The token that is meant: its first byte and length in bytes, and its line and column, which count
 * from 1, columns in characters. Behind the end of the text the length is 0. Each place may be
 * null. */
KESTRA_API kestra_status kestra_diagnosis_place(const kestra_diagnosis* diagnosis, size_t* offset,
                                                size_t* length, int32_t* line, int32_t* column);
/* One sentence, without an end of line: what is wrong and, where that can be told, what is probably
 * meant. */
KESTRA_API kestra_status kestra_diagnosis_message(const kestra_diagnosis* diagnosis,
                                                  const char** text);
/* What would have been accepted at that place, out of the grammar: words and marks as they are
 * written ("WHERE", ","), and kinds of things ("a number", "a column that holds text"). None for a
 * text that parses. number counts from 0, here and below. */
KESTRA_API kestra_status kestra_diagnosis_expected_count(const kestra_diagnosis* diagnosis,
                                                         int32_t* count);
KESTRA_API kestra_status kestra_diagnosis_expected(const kestra_diagnosis* diagnosis,
                                                   int32_t number, const char** text);
/* What probably was meant in place of the token, the likeliest first: texts that can be put there.
 */
KESTRA_API kestra_status kestra_diagnosis_suggestion_count(const kestra_diagnosis* diagnosis,
                                                           int32_t* count);
KESTRA_API kestra_status kestra_diagnosis_suggestion(const kestra_diagnosis* diagnosis,
                                                     int32_t number, const char** text);

#define KESTRA_COMPLETION_KEYWORD 0  /* words of the language; functions, with "(" behind */
#define KESTRA_COMPLETION_MODULE 1   /* modules, and the built-in sources */
#define KESTRA_COMPLETION_CLASS 2    /* classes; those of FILES and REGISTRY with "(" behind */
#define KESTRA_COMPLETION_COLUMN 3   /* properties, and aliases before a dot */
#define KESTRA_COMPLETION_ARGUMENT 4 /* arguments of a module or action, with "=" behind */
#define KESTRA_COMPLETION_OPTION 5   /* texts of enumerations and flag sets, actions; quoted */

/* What may stand at the cursor, which is a byte of the text from 0 to length, given what stands
 * before it and behind it. The word that is begun there is completed in any case; names come out as
 * they are declared. Where "(" stands behind the word already it is left out. Modules, classes,
 * columns, arguments and options are those of the session's class tree. */
KESTRA_API kestra_status kestra_session_complete(kestra_session* session, const char* text,
                                                 size_t length, size_t cursor,
                                                 kestra_completions** completions);
KESTRA_API kestra_status kestra_completions_release(kestra_completions* completions);
/* The bytes of the text that a completion replaces. */
KESTRA_API kestra_status kestra_completions_place(const kestra_completions* completions,
                                                  size_t* offset, size_t* length);
KESTRA_API kestra_status kestra_completions_count(const kestra_completions* completions,
                                                  int32_t* count);
/* number counts from 0. kind is one of the numbers above, description one line or empty; either
 * place may be null. */
KESTRA_API kestra_status kestra_completions_text(const kestra_completions* completions,
                                                 int32_t number, const char** text, int32_t* kind,
                                                 const char** description);

/* ---- Class tree ---- */

/* The class named "Root"; its children are the modules. */
KESTRA_API kestra_status kestra_session_root_class(kestra_session* session,
                                                   kestra_class** root_class);
KESTRA_API kestra_status kestra_class_release(kestra_class* diag_class);
/* Two handles may stand for one class: same is 1 then, else 0. */
KESTRA_API kestra_status kestra_class_is_same(const kestra_class* diag_class,
                                              const kestra_class* other, int32_t* same);
KESTRA_API kestra_status kestra_class_name(const kestra_class* diag_class, const char** name);
KESTRA_API kestra_status kestra_class_description(const kestra_class* diag_class,
                                                  const char** text);
/* The class and everything below it as XML, for tools. length may be null. Valid until the class's
 * next dump or its release. */
KESTRA_API kestra_status kestra_class_dump(kestra_class* diag_class, const char** text,
                                           size_t* length);
KESTRA_API kestra_status kestra_class_child_count(const kestra_class* diag_class, int32_t* count);
/* number counts from 0, here and below. */
KESTRA_API kestra_status kestra_class_child(const kestra_class* diag_class, int32_t number,
                                            kestra_class** child);
KESTRA_API kestra_status kestra_class_property_count(const kestra_class* diag_class,
                                                     int32_t* count);
/* What a property is: any place for a result may be null. options are joined by "|"; unit and
 * options are empty where there are none. */
KESTRA_API kestra_status kestra_class_property(const kestra_class* diag_class, int32_t number,
                                               const char** name, int32_t* type, const char** unit,
                                               const char** options, int32_t* can_be_changed,
                                               const char** description);
/* The arguments that a module takes in parentheses; number counts from 0. default_text is as it is
 * written in a query ("5000", "'*'", "'16 bits'"). Any place for a result may be null. */
KESTRA_API kestra_status kestra_class_argument_count(const kestra_class* diag_class,
                                                     int32_t* count);
KESTRA_API kestra_status kestra_class_argument(kestra_class* diag_class, int32_t number,
                                               const char** name, int32_t* type, const char** unit,
                                               const char** options, const char** default_text,
                                               const char** description);
/* What EXECUTE ACTION can do with an item of the class, and the arguments of that. */
KESTRA_API kestra_status kestra_class_action_count(const kestra_class* diag_class, int32_t* count);
KESTRA_API kestra_status kestra_class_action(const kestra_class* diag_class, int32_t number,
                                             const char** name, const char** description,
                                             int32_t* argument_count);
KESTRA_API kestra_status kestra_class_action_argument(
    kestra_class* diag_class, int32_t action, int32_t number, const char** name, int32_t* type,
    const char** unit, const char** options, const char** default_text, const char** description);
/* Whether INSERT may make items of the class, and DELETE remove them. 1 or 0. */
KESTRA_API kestra_status kestra_class_can_be_added(const kestra_class* diag_class, int32_t* can);
KESTRA_API kestra_status kestra_class_can_be_deleted(const kestra_class* diag_class, int32_t* can);
/* Queries that show the class. */
KESTRA_API kestra_status kestra_class_example_count(const kestra_class* diag_class, int32_t* count);
KESTRA_API kestra_status kestra_class_example(const kestra_class* diag_class, int32_t number,
                                              const char** query);
/* One of KESTRA_MODULE_..., for a module by its name in any case; KESTRA_E_NOTFOUND for one that
 * there is not. A plug-in's module is ready. */
KESTRA_API kestra_status kestra_session_module_state(kestra_session* session,
                                                     const char* module_name, int32_t* state);

#ifdef __cplusplus
}
#endif

#endif
