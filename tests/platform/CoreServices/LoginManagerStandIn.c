/* Stands in for systemd-logind on a private bus: owns the name
 * org.freedesktop.login1, records every call on the Manager interface as
 * "<method> <argument>" in the record file and answers it.  Says "ready" in
 * the record once the name is owned.  Arguments: bus address, record file. */
#include <dbus/dbus.h>

#include <stdio.h>
#include <string.h>

static void Record(const char *path, const char *line)
{
    FILE *file = fopen(path, "a");
    if (file != NULL) {
        fprintf(file, "%s\n", line);
        fclose(file);
    }
}

int main(int argc, char **argv)
{
    if (argc < 3)
        return 2;
    DBusError error;
    dbus_error_init(&error);
    DBusConnection *bus = dbus_connection_open_private(argv[1], &error);
    if (bus == NULL || !dbus_bus_register(bus, &error))
        return 1;
    if (dbus_bus_request_name(bus, "org.freedesktop.login1", DBUS_NAME_FLAG_DO_NOT_QUEUE, &error) !=
        DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        return 1;
    Record(argv[2], "ready");
    while (dbus_connection_read_write(bus, -1)) {
        DBusMessage *message;
        while ((message = dbus_connection_pop_message(bus)) != NULL) {
            if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_CALL &&
                dbus_message_has_interface(message, "org.freedesktop.login1.Manager")) {
                char line[256];
                DBusMessageIter args;
                const char *argument = "";
                if (dbus_message_iter_init(message, &args)) {
                    if (dbus_message_iter_get_arg_type(&args) == DBUS_TYPE_BOOLEAN) {
                        dbus_bool_t flag = 0;
                        dbus_message_iter_get_basic(&args, &flag);
                        argument = flag ? "true" : "false";
                    } else if (dbus_message_iter_get_arg_type(&args) == DBUS_TYPE_STRING) {
                        dbus_message_iter_get_basic(&args, &argument);
                        if (argument[0] == '\0')
                            argument = "<own session>";
                    }
                }
                snprintf(line, sizeof line, "%s %s", dbus_message_get_member(message), argument);
                Record(argv[2], line);
                if (!dbus_message_get_no_reply(message)) {
                    DBusMessage *answer = dbus_message_new_method_return(message);
                    dbus_connection_send(bus, answer, NULL);
                    dbus_message_unref(answer);
                }
            }
            dbus_message_unref(message);
        }
    }
    return 0;
}
