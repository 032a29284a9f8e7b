/* The smallest client: plays a recording for a few seconds and tells how far it is.
 *
 *     smallest RECORDING
 */
#define _XOPEN_SOURCE 700 /* realpath */

#include <inttypes.h>
#include <pvr_service_api.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static int failed(const char *what)
{
    fprintf(stderr, "smallest: %s (PVR_LOG=stderr tells more)\n", what);
    return EXIT_FAILURE;
}

static int play(int handle, const char *recording)
{
    /* PS_SUCCESS says that the service has answered; whether it plays is asked afterwards. */
    char playing[255] = "";
    if (svc_pvr_play_start(handle, recording, 0) != PS_SUCCESS ||
        svc_pvr_get_playback_uri_by_handle(handle, playing) != PS_SUCCESS)
        return failed("the service does not answer");
    if (playing[0] == '\0')
        return failed("the service does not play this recording");

    for (int i = 0; i < 3; ++i) {
        sleep(1);
        int state = 0;
        int64_t position = 0;
        if (svc_pvr_get_progress(handle, &state, &position, NULL) != PS_SUCCESS)
            return failed("the service does not tell the position");
        printf("position %" PRId64 " s\n", position);
    }
    return svc_pvr_play_stop(handle) == PS_SUCCESS ? EXIT_SUCCESS : failed("the service does not stop");
}

int main(int argc, char *argv[])
{
    if (argc != 2) {
        fputs("usage: smallest RECORDING\n", stderr);
        return EXIT_FAILURE;
    }
    /* The service is a process of its own, in another folder. */
    char *recording = realpath(argv[1], NULL);
    if (recording == NULL) {
        perror(argv[1]);
        return EXIT_FAILURE;
    }

    int handle = 0;
    int status = EXIT_FAILURE;
    if (svc_pvr_get_handle_for_playback(&handle) != PS_SUCCESS) {
        failed("the service gives no handle; does it run?");
    } else {
        status = play(handle, recording);
        if (svc_pvr_release_handle(handle) != PS_SUCCESS)
            status = failed("the service does not take the handle back");
    }
    svc_pvr_service_destroy();
    free(recording);
    return status;
}
