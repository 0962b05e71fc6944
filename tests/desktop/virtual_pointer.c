/* A pointer for compositors with the wlr virtual pointer protocol (version 1). Reads a command a line from its input and
   answers each with "ok" when the compositor has it: "move X Y", in points of a display of WIDTH by HEIGHT; "press"; "release".

   usage: virtual_pointer WIDTH HEIGHT */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wayland-client.h>

enum { create_request = 0 };
enum { motion_absolute_request = 1, button_request = 2, frame_request = 4 };
enum { left_button = 0x110 };

static const struct wl_interface pointer_interface;
static const struct wl_interface* plain[5];
static const struct wl_interface* create_arguments[] = {&wl_seat_interface, &pointer_interface};
static const struct wl_message manager_requests[] = {{"create_virtual_pointer", "?on", create_arguments}};
static const struct wl_message pointer_requests[] = {
    {"motion", "uff", plain}, {"motion_absolute", "uuuuu", plain}, {"button", "uuu", plain},
    {"axis", "uuf", plain},   {"frame", "", plain},
};
static const struct wl_interface manager_interface = {"zwlr_virtual_pointer_manager_v1", 1, 1, manager_requests, 0, NULL};
static const struct wl_interface pointer_interface = {"zwlr_virtual_pointer_v1", 1, 5, pointer_requests, 0, NULL};

static struct wl_proxy* manager;

static void appeared(void* data, struct wl_registry* registry, uint32_t number, const char* name, uint32_t version) {
    (void)data;
    (void)version;
    if (strcmp(name, manager_interface.name) == 0)
        manager = wl_registry_bind(registry, number, &manager_interface, 1);
}

static void gone(void* data, struct wl_registry* registry, uint32_t number) {
    (void)data;
    (void)registry;
    (void)number;
}

static const struct wl_registry_listener listener = {appeared, gone};

static uint32_t now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (uint32_t)(time.tv_sec * 1000 + time.tv_nsec / 1000000);
}

int main(int count, char** arguments) {
    struct wl_display* display = wl_display_connect(NULL);
    if (count != 3 || !display)
        return 2;
    const uint32_t width = (uint32_t)atoi(arguments[1]);
    const uint32_t height = (uint32_t)atoi(arguments[2]);
    struct wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, NULL);
    wl_display_roundtrip(display);
    if (!manager)
        return 1;
    struct wl_proxy* pointer =
        wl_proxy_marshal_flags(manager, create_request, &pointer_interface, 1, 0, NULL, NULL);
    char line[100];
    while (fgets(line, sizeof line, stdin)) {
        unsigned x = 0;
        unsigned y = 0;
        if (sscanf(line, "move %u %u", &x, &y) == 2)
            wl_proxy_marshal_flags(pointer, motion_absolute_request, NULL, 1, 0, now(), x, y, width, height);
        else
            wl_proxy_marshal_flags(pointer, button_request, NULL, 1, 0, now(), left_button,
                                   (uint32_t)(strncmp(line, "press", 5) == 0));
        wl_proxy_marshal_flags(pointer, frame_request, NULL, 1, 0);
        wl_display_roundtrip(display);
        puts("ok");
        fflush(stdout);
    }
    wl_display_disconnect(display);
    return 0;
}
