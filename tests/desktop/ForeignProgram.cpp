// Another program that uses the desktop's calendar service, by its client library:
//   foreign_program add|replace LIST, with an item on standard input; remove LIST UID;
//   rename LIST TITLE; recolor LIST COLOR; forget LIST.
// LIST is the identifier of a task list.

#include <libecal/libecal.h>

#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>

namespace {

int failed(const GError* error) {
    std::fprintf(stderr, "%s\n", error ? error->message : "wrong usage");
    return 1;
}

}  // namespace

int main(int count, char** arguments) {
    GError* error = nullptr;
    ESourceRegistry* const registry = e_source_registry_new_sync(nullptr, &error);
    ESource* const list =
        registry && count > 2 ? e_source_registry_ref_source(registry, arguments[2]) : nullptr;
    if (!list)
        return failed(error);
    const std::string command = arguments[1];
    const std::string value = count > 3 ? arguments[3] : "";
    if (command == "forget")
        return e_source_remove_sync(list, nullptr, &error) ? 0 : failed(error);
    if (command == "rename" || command == "recolor") {
        if (command == "rename")
            e_source_set_display_name(list, value.c_str());
        else
            e_source_selectable_set_color(
                E_SOURCE_SELECTABLE(e_source_get_extension(list, E_SOURCE_EXTENSION_TASK_LIST)),
                value.c_str());
        return e_source_write_sync(list, nullptr, &error) ? 0 : failed(error);
    }
    EClient* const client = e_cal_client_connect_sync(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS,
                                                      static_cast<guint32>(-1), nullptr, &error);
    if (!client)
        return failed(error);
    ECalClient* const calendar = E_CAL_CLIENT(client);
    bool isDone = false;
    if (command == "remove") {
        isDone = e_cal_client_remove_object_sync(calendar, value.c_str(), nullptr, E_CAL_OBJ_MOD_ALL,
                                                 E_CAL_OPERATION_FLAG_NONE, nullptr, &error);
    } else if (command == "add" || command == "replace") {
        const std::string text(std::istreambuf_iterator<char>(std::cin), {});
        ICalComponent* item = i_cal_component_new_from_string(text.c_str());
        if (item && command == "add")
            isDone = e_cal_client_create_object_sync(calendar, item, E_CAL_OPERATION_FLAG_NONE, nullptr,
                                                     nullptr, &error);
        else if (item)
            isDone = e_cal_client_modify_object_sync(calendar, item, E_CAL_OBJ_MOD_ALL,
                                                     E_CAL_OPERATION_FLAG_NONE, nullptr, &error);
        g_clear_object(&item);
    }
    g_object_unref(client);
    g_object_unref(list);
    g_object_unref(registry);
    return isDone ? 0 : failed(error);
}
