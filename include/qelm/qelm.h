/* QELM as a library: sessions of the plug-in, driven by call strings.
 *
 *   qelm_session *session = NULL;
 *   int result = 0;
 *   if (qelm_start("/home/eva/.config", &session) &&
 *       qelm_open(session, "operation.mif") &&
 *       qelm_call(session, "SetScheme---filter---Audience---Beginner", &result, NULL) &&
 *       qelm_call(session, "FilterFile---operation.mif", &result, NULL)) {
 *     ...
 *   } else {
 *     fprintf(stderr, "%s\n", qelm_last_message(session));
 *   }
 *   qelm_end(session);
 *
 * Texts are UTF-8. Paths without a root are seen from the process's current folder. Functions that can fail
 * return 1 when they did what they were asked for and 0 when they did not; qelm_last_message tells why. A
 * null session, or a null text where one is needed, is such a failure. No exception and no signal leaves the
 * library, and it writes nothing to standard output or standard error.
 *
 * A session is used by one thread at a time. Different sessions know nothing of each other: each may have a
 * thread of its own. Two sessions that save the same file both succeed, and the later one stays.
 */
#ifndef QELM_QELM_H
#define QELM_QELM_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define QELM_API __attribute__((visibility("default")))
#else
#define QELM_API
#endif

typedef struct qelm_session qelm_session;

/* The version of the library, "MAJOR.MINOR.PATCH". The text is the library's. */
QELM_API const char *qelm_version(void);

/* How a session finds its files. Zeroes mean the defaults that the program qelm has without options. The texts
 * are copied. */
typedef struct qelm_options {
  const char *profile;        /* the folder that stands for APPDATA */
  const char *plugin_folder;  /* QELM.ini, templates, languages */
  const char *local_settings; /* this file, as it is */
  const char *main_settings;  /* this document */
} qelm_options;

/* Starts a session, with a profile folder (null: the user's own) or with options (null: the defaults). The
 * session in *session belongs to the caller, who ends it, also when the start failed: then it is good for
 * qelm_last_message and qelm_end only. Only where there is no memory for it *session is null. */
QELM_API int qelm_start(const char *profile, qelm_session **session);
QELM_API int qelm_start_with(const qelm_options *options, qelm_session **session);

/* Ends a session: closes its documents, and saves nothing. Null is passed over. Not from a handler. */
QELM_API void qelm_end(qelm_session *session);

/* Opens a document or book. One that is open already stays as it is. */
QELM_API int qelm_open(qelm_session *session, const char *path);

/* Sends a call string. *result becomes the integer that answers it; a call that is answered by an error code
 * is answered too. *from (may be null) becomes "call", "coloring", "filter" or "validation": who gave the
 * integer. That text is the library's and stays valid. */
QELM_API int qelm_call(qelm_session *session, const char *call, int *result, const char **from);

/* Saves an open document or book, to another path when `as` is not null; that then is the path by which it is
 * known, unless the other file has another format. */
QELM_API int qelm_save(qelm_session *session, const char *path, const char *as);

/* Closes an open document or book. Changes that were not saved are lost. */
QELM_API int qelm_close(qelm_session *session, const char *path);

/* Why the last function that failed did so or, where that came later, the last alert that the plug-in showed;
 * "" when there was neither. The text is the session's and is valid until the session is used again. */
QELM_API const char *qelm_last_message(const qelm_session *session);

/* Calls `handler` with `data` whenever the plug-in notifies a client (the call strings SetNotificationClient
 * and SetNotificationStatus), within the qelm_call that caused it; null: no longer. The texts are valid
 * during the call only. The handler may call qelm_call with "Hello" and GetParm; what would change something
 * is answered by 0, and opening, saving and closing fail. It lets no exception pass. */
typedef void (*qelm_notified)(void *data, const char *client, const char *text);
QELM_API int qelm_on_notification(qelm_session *session, qelm_notified handler, void *data);

#ifdef __cplusplus
}
#endif

#endif
