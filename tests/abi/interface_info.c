/* Prints, as XML, what the generated glue says about the interface: what a service's introspection shows. */
#include "pvr_gdbus_generated.h"

#include <stdio.h>

int main(void)
{
    GString *text = g_string_new("<node>\n");
    g_dbus_interface_info_generate_xml(org_vexan_tv_pvr_interface_info(), 2, text);
    g_string_append(text, "</node>\n");
    fputs(text->str, stdout);
    g_string_free(text, TRUE);
    return 0;
}
