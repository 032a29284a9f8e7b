/* An application with a main loop. Its calls of the library run on one thread of their own, in order, and the
 * main loop hears what came of them: a call may hold its thread for 25 s when the service is silent.
 *
 *     worker_thread RECORDING
 */
#define _XOPEN_SOURCE 700 /* realpath */

#include <gio/gio.h>
#include <glib-unix.h>
#include <inttypes.h>
#include <pvr_service_api.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

/* ---- The worker. It knows nothing of recordings: take it as it is. */

/* Runs on the worker's thread. Gives the answer, to be freed with g_free, or null and the error. */
typedef void *(*Work)(void *data, void *argument, GError **error);

typedef struct {
    GThread *thread;
    GAsyncQueue *queue; /* of GTask; and then the end mark */
    void *data;         /* belongs to the thread until that has ended */
} Worker;

typedef struct {
    const char *name;
    Work work;
} Request;

static char end_mark;

static void *worker_run(void *user_data)
{
    Worker *worker = (Worker *)user_data;
    /* The thread pushes no main context of its own. So the session that the first call makes belongs to the
     * global one, and the callbacks that are registered run in the main loop. */
    for (;;) {
        void *next = g_async_queue_pop(worker->queue);
        if (next == &end_mark)
            return NULL;
        GTask *task = G_TASK(next);
        const Request *request = (const Request *)g_task_get_source_tag(task);
        GError *error = NULL;
        void *answer = request->work(worker->data, g_task_get_task_data(task), &error);
        if (error != NULL)
            g_task_return_error(task, error);
        else
            g_task_return_pointer(task, answer, g_free);
        g_object_unref(task);
    }
}

static void worker_start(Worker *worker, void *data)
{
    worker->queue = g_async_queue_new();
    worker->data = data;
    worker->thread = g_thread_new("recording calls", worker_run, worker);
}

/* Returns at once. The main loop calls done, which takes the answer with g_task_propagate_pointer. */
static void worker_ask(Worker *worker, const Request *request, void *argument, GDestroyNotify free_argument,
                       GAsyncReadyCallback done, void *user_data)
{
    GTask *task = g_task_new(NULL, NULL, done, user_data);
    g_task_set_source_tag(task, (void *)request);
    g_task_set_task_data(task, argument, free_argument);
    g_async_queue_push(worker->queue, task);
}

/* Waits until all that was asked is done. Answers that nobody has taken yet stay with the main loop. */
static void worker_finish(Worker *worker)
{
    g_async_queue_push(worker->queue, &end_mark);
    g_thread_join(worker->thread);
    g_async_queue_unref(worker->queue);
}

/* ---- What runs on the worker. */

typedef struct {
    bool has_handle;
    int handle;
} Player;

static void *fail(GError **error, const char *what)
{
    g_set_error(error, G_IO_ERROR, G_IO_ERROR_FAILED, "%s (PVR_LOG=stderr tells more)", what);
    return NULL;
}

static void *start_playing(void *data, void *recording, GError **error)
{
    Player *player = (Player *)data;
    char playing[255] = "";
    player->has_handle = svc_pvr_get_handle_for_playback(&player->handle) == PS_SUCCESS;
    if (!player->has_handle)
        return fail(error, "the service gives no handle; does it run?");
    if (svc_pvr_play_start(player->handle, (const char *)recording, 0) != PS_SUCCESS ||
        svc_pvr_get_playback_uri_by_handle(player->handle, playing) != PS_SUCCESS)
        return fail(error, "the service does not answer");
    if (playing[0] == '\0')
        return fail(error, "the service does not play this recording");
    return g_strdup_printf("plays %s", playing);
}

static void *tell_position(void *data, void *unused, GError **error)
{
    Player *player = (Player *)data;
    int state = 0;
    int64_t position = 0;
    (void)unused;
    if (svc_pvr_get_progress(player->handle, &state, &position, NULL) != PS_SUCCESS)
        return fail(error, "the service does not tell the position");
    return g_strdup_printf("%" PRId64 " s", position);
}

static void *stop_playing(void *data, void *unused, GError **error)
{
    Player *player = (Player *)data;
    (void)unused;
    if (!player->has_handle)
        return g_strdup("nothing played");
    player->has_handle = false;
    if (svc_pvr_play_stop(player->handle) != PS_SUCCESS || svc_pvr_release_handle(player->handle) != PS_SUCCESS)
        return fail(error, "the service does not take the handle back");
    return g_strdup("stopped");
}

static const Request start = {"start", start_playing};
static const Request position = {"position", tell_position};
static const Request stop = {"stop", stop_playing};

/* ---- What runs in the main loop. */

enum { TICK_MS = 100, TICKS_BETWEEN_POSITIONS = 5, POSITIONS = 3 };

typedef struct {
    GMainLoop *loop;
    Worker worker;
    Player player;
    unsigned ticks;
    unsigned positions; /* asked so far */
    unsigned open;      /* requests without an answer yet */
    bool is_ending;
    int status;
} Application;

static void end(Application *application);

static void on_answer(GObject *source, GAsyncResult *result, void *user_data)
{
    Application *application = (Application *)user_data;
    const Request *request = (const Request *)g_task_get_source_tag(G_TASK(result));
    GError *error = NULL;
    char *answer = (char *)g_task_propagate_pointer(G_TASK(result), &error);
    (void)source;

    --application->open;
    if (error == NULL) {
        printf("answer to %s: %s\n", request->name, answer);
    } else {
        fprintf(stderr, "worker_thread: %s\n", error->message);
        application->status = EXIT_FAILURE;
        end(application);
    }
    g_clear_error(&error);
    g_free(answer);
    if (application->is_ending && application->open == 0)
        g_main_loop_quit(application->loop);
}

static void ask(Application *application, const Request *request, void *argument, GDestroyNotify free_argument)
{
    printf("request: %s\n", request->name);
    ++application->open;
    worker_ask(&application->worker, request, argument, free_argument, on_answer, application);
}

/* Stops behind whatever is asked already, so that no request is lost and no handle is kept. */
static void end(Application *application)
{
    if (!application->is_ending) {
        application->is_ending = true;
        ask(application, &stop, NULL, NULL);
    }
}

static gboolean on_tick(void *user_data)
{
    Application *application = (Application *)user_data;
    ++application->ticks;
    if (application->open > 0) {
        /* Nothing more is asked meanwhile: requests to a silent service would pile up. */
        printf("tick: the main loop is alive\n");
    } else if (!application->is_ending && application->ticks % TICKS_BETWEEN_POSITIONS == 0) {
        if (application->positions++ < POSITIONS)
            ask(application, &position, NULL, NULL);
        else
            end(application);
    }
    return G_SOURCE_CONTINUE;
}

static gboolean on_interrupt(void *user_data)
{
    end((Application *)user_data);
    return G_SOURCE_CONTINUE;
}

int main(int argc, char *argv[])
{
    if (argc != 2) {
        fputs("usage: worker_thread RECORDING\n", stderr);
        return EXIT_FAILURE;
    }
    /* The service is a process of its own, in another folder. */
    char *recording = realpath(argv[1], NULL);
    if (recording == NULL) {
        perror(argv[1]);
        return EXIT_FAILURE;
    }
    setvbuf(stdout, NULL, _IOLBF, BUFSIZ);

    static Application application;
    application.loop = g_main_loop_new(NULL, FALSE);
    worker_start(&application.worker, &application.player);
    unsigned ticks = g_timeout_add(TICK_MS, on_tick, &application);
    unsigned interrupt = g_unix_signal_add(SIGINT, on_interrupt, &application);

    ask(&application, &start, g_strdup(recording), g_free);
    g_main_loop_run(application.loop);

    g_source_remove(interrupt);
    g_source_remove(ticks);
    worker_finish(&application.worker);
    g_main_loop_unref(application.loop);
    svc_pvr_service_destroy();
    free(recording);
    return application.status;
}
