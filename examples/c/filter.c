/* Filters one document by calls, and says what happened:
 *
 *   filter PROFILE DOCUMENT CATEGORY SCHEME OUTPUT
 *
 * The document is hidden in (mode "source") and saved as OUTPUT; its own file stays what it is.
 */
#include <qelm/qelm.h>
#include <stdio.h>

/* Sends a call and tells what it came to. 1 when that was a success. */
static int call(qelm_session *session, const char *text) {
  int result = 0;
  const char *from = "";
  if (!qelm_call(session, text, &result, &from)) {
    fprintf(stderr, "%s\n", qelm_last_message(session));
    return 0;
  }
  printf("%s -> %d (%s)\n", text, result, from);
  return result == 1;
}

static void notified(void *data, const char *client, const char *text) {
  (void)data;
  printf("%s is told: %s\n", client, text);
}

static int filter(qelm_session *session, char **arguments) {
  char text[4096];
  if (!qelm_on_notification(session, notified, NULL) || !call(session, "SetNotificationClient---example") ||
      !call(session, "SetNotificationStatus---1") || !call(session, "SetParm---Filter_Type---Source")) {
    return 0;
  }
  snprintf(text, sizeof text, "SetScheme---filter---%s---%s---True", arguments[3], arguments[4]);
  if (!call(session, text)) return 0;
  if (!qelm_open(session, arguments[2])) {
    fprintf(stderr, "%s\n", qelm_last_message(session));
    return 0;
  }
  snprintf(text, sizeof text, "FilterFile---%s", arguments[2]);
  if (!call(session, text)) return 0;
  if (qelm_save(session, arguments[2], arguments[5])) return 1;
  fprintf(stderr, "%s\n", qelm_last_message(session));
  return 0;
}

int main(int count, char **arguments) {
  qelm_session *session = NULL;
  int done = 0;
  if (count != 6) {
    fprintf(stderr, "usage: filter PROFILE DOCUMENT CATEGORY SCHEME OUTPUT\n");
    return 2;
  }
  if (qelm_start(arguments[1], &session)) {
    done = filter(session, arguments);
  } else {
    fprintf(stderr, "%s\n", qelm_last_message(session));
  }
  qelm_end(session);
  return done ? 0 : 1;
}
