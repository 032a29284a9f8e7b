/* Records a channel for some seconds and hears of it: what becomes of a request arrives later, as a result, and
 * changes of state arrive by themselves. The recording ends by its duration, and the program with it.
 *
 *     record_and_listen SERVICE_ID SECONDS
 */
#include <glib.h>
#include <inttypes.h>
#include <pvr_service_api.h>
#include <stdio.h>
#include <stdlib.h>

typedef struct {
    GMainLoop *loop;
    uint64_t service_id;
    int status;
} Application;

static void end(Application *application, int status)
{
    application->status = status;
    g_main_loop_quit(application->loop);
}

/* Runs in the main loop, as all callbacks do. It may call any function of the library. */
static void on_result(pvr_service_result result, void *user_data)
{
    Application *application = (Application *)user_data;
    if (result.service_id != application->service_id)
        return; /* somebody else's */
    switch (result.method) {
    case PS_RECORD_START:
        printf("start: result %d\n", (int)result.result);
        if (result.result != 0)
            end(application, EXIT_FAILURE);
        break;
    case PS_RECORD_STOP:
        printf("stop: result %d\n", (int)result.result);
        end(application, EXIT_SUCCESS);
        break;
    case PS_RECORD_EXCEPTION:
        printf("cut off: result %d\n", (int)result.result);
        end(application, EXIT_FAILURE);
        break;
    default:
        break;
    }
    fflush(stdout);
}

static void on_signal(pvr_service_signal signal, void *user_data)
{
    (void)user_data;
    /* The current state belongs to the signal's kind, which this callback is not told; the uri tells whose it is. */
    printf("handle %d is in state %d: %s\n", (int)signal.handle, (int)signal.current_state, signal.uri);
    fflush(stdout);
}

static int fail(const char *what)
{
    fprintf(stderr, "record_and_listen: %s (PVR_LOG=stderr tells more)\n", what);
    return EXIT_FAILURE;
}

int main(int argc, char **argv)
{
    Application application = {NULL, 0, EXIT_FAILURE};
    int seconds = 0;
    if (argc != 3 || sscanf(argv[1], "%" SCNu64, &application.service_id) != 1 ||
        sscanf(argv[2], "%d", &seconds) != 1 || seconds < 1) {
        fputs("usage: record_and_listen SERVICE_ID SECONDS\n", stderr);
        return EXIT_FAILURE;
    }

    /* The session first: what is registered without one hears nothing. Its events arrive in this thread's default
     * main context, which the loop below runs. */
    if (svc_pvr_service_init() != PS_SESSION_READY)
        return fail("there is no session");
    if (svc_pvr_register_result_pvr_cb(on_result, &application) != PS_SUCCESS ||
        svc_pvr_register_signal_cb(on_signal, &application) != PS_SUCCESS)
        return fail("the product does not record");
    application.loop = g_main_loop_new(NULL, FALSE);

    /* The library has delivered the requests when these return; on_result hears what came of them. */
    if (svc_pvr_start_recording(application.service_id, 0, "") != PS_SUCCESS ||
        svc_pvr_set_record_duration(application.service_id, seconds) != PS_SUCCESS)
        application.status = fail("the service does not answer; does it run?");
    else
        g_main_loop_run(application.loop);

    svc_pvr_unregister_signal_cb(on_signal);
    svc_pvr_unregister_result_pvr_cb(on_result);
    g_main_loop_unref(application.loop);
    svc_pvr_service_destroy();
    return application.status;
}
