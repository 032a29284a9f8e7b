/* Records a channel and shows how far the recording is. Ctrl-C stops it. docs/tutorial.md explains each part.
 *
 *     tutorial SERVICE_ID SECONDS
 */
#include <glib-unix.h>
#include <inttypes.h>
#include <pvr_service_api.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct {
    GMainLoop *loop;
    uint64_t service_id;
    int duration;     /* seconds */
    int64_t recorded; /* seconds, as last shown */
    char uri[256];    /* where the recording is */
    int status;
} Application;

static void end(Application *application, int status)
{
    application->status = status;
    g_main_loop_quit(application->loop);
}

static int fail(const char *what)
{
    fprintf(stderr, "tutorial: %s (PVR_LOG=stderr tells more)\n", what);
    return EXIT_FAILURE;
}

/* What became of a request, whoever made it. */
static void on_result(pvr_service_result result, void *user_data)
{
    Application *application = (Application *)user_data;
    if (result.service_id != application->service_id)
        return; /* another channel */
    if (result.method == PS_RECORD_START && result.result != 0) {
        fprintf(stderr, "tutorial: refused, with code %d\n", (int)result.result);
        end(application, EXIT_FAILURE);
    } else if (result.method == PS_RECORD_STOP) {
        printf("recorded %s\n", application->uri);
        end(application, EXIT_SUCCESS);
    } else if (result.method == PS_RECORD_EXCEPTION) {
        end(application, fail("the recording was cut off"));
    }
}

/* News of any recording or playback. */
static void on_signal(pvr_service_signal signal, void *user_data)
{
    Application *application = (Application *)user_data;
    if (application->uri[0] == '\0')
        memcpy(application->uri, signal.uri, sizeof signal.uri); /* which is shorter, so a NUL follows */
}

static gboolean show_progress(void *user_data)
{
    enum { WIDTH = 20 };
    Application *application = (Application *)user_data;
    int state = 0;
    int64_t recorded = 0;
    if (svc_pvr_get_progress_by_service_id(application->service_id, &state, &recorded, NULL) != PS_SUCCESS) {
        end(application, fail("the service does not tell how far it is"));
    } else if (recorded > application->recorded && recorded <= application->duration) {
        int filled = (int)(WIDTH * recorded / application->duration);
        application->recorded = recorded;
        printf("[%.*s%*s] %" PRId64 " of %d s\n", filled, "####################", WIDTH - filled, "", recorded,
               application->duration);
        fflush(stdout);
    }
    return G_SOURCE_CONTINUE;
}

static gboolean on_interrupt(void *user_data)
{
    Application *application = (Application *)user_data;
    if (svc_pvr_stop_recording(application->service_id, 0, "") != PS_SUCCESS)
        end(application, fail("the service does not stop"));
    return G_SOURCE_CONTINUE; /* on_result hears of the end */
}

static int record(Application *application)
{
    if (svc_pvr_service_init() != PS_SESSION_READY)
        return fail("there is no session");
    if (svc_pvr_register_result_pvr_cb(on_result, application) != PS_SUCCESS ||
        svc_pvr_register_signal_cb(on_signal, application) != PS_SUCCESS)
        return fail("the product does not record");
    if (svc_pvr_start_recording(application->service_id, 0, "") != PS_SUCCESS ||
        svc_pvr_set_record_duration(application->service_id, application->duration) != PS_SUCCESS)
        return fail("the service does not answer; does it run?");

    unsigned tick = g_timeout_add(200, show_progress, application);
    unsigned interrupt = g_unix_signal_add(SIGINT, on_interrupt, application);
    g_main_loop_run(application->loop);
    g_source_remove(interrupt);
    g_source_remove(tick);
    return application->status;
}

int main(int argc, char **argv)
{
    Application application = {NULL, 0, 0, 0, "", EXIT_FAILURE};
    if (argc != 3 || sscanf(argv[1], "%" SCNu64, &application.service_id) != 1 ||
        sscanf(argv[2], "%d", &application.duration) != 1 || application.duration < 1) {
        fputs("usage: tutorial SERVICE_ID SECONDS\n", stderr);
        return EXIT_FAILURE;
    }
    application.loop = g_main_loop_new(NULL, FALSE);
    int status = record(&application);
    svc_pvr_unregister_signal_cb(on_signal);
    svc_pvr_unregister_result_pvr_cb(on_result);
    svc_pvr_service_destroy();
    g_main_loop_unref(application.loop);
    return status;
}
