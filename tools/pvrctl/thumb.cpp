// pvrctl thumb: how the thumbnail of a recording is coded, according to the colour-format file beside it.
#include <memory>
#include <pvr_service_api.h>
#include <string>

#include "command.h"
#include "side_files.h"

namespace pvrctl {
namespace {

constexpr int planar_4_2_0 = 1; ///< as the development service has it

void show_thumbnail(Output &output, const std::string &file)
{
    const RecordingPath path(file);
    const std::string colour_format = path.beside("cft");
    opened_beside(colour_format); // tells why it cannot be
    yuv_info thumbnail{};
    if (svc_pvr_get_yuv_info(path.c_str(), &thumbnail) != PS_SUCCESS)
        throw Failure(ExitCode::failed, '\'' + colour_format + "' has fewer than " + std::to_string(sizeof thumbnail) +
                                            " bytes, or cannot be read");
    const int format = thumbnail.color_format;
    const int width = thumbnail.width;
    const int height = thumbnail.height;
    output.show(
        {{"file", colour_format},
         {"color_format", format},
         {"width", width},
         {"height", height},
         {"reserved", hexadecimal({reinterpret_cast<const char *>(thumbnail.reserved), sizeof thumbnail.reserved})}},
        {{"file", colour_format},
         {"colour format", std::to_string(format) + (format == planar_4_2_0 ? ", planar 4:2:0" : "")},
         {"size", std::to_string(width) + " x " + std::to_string(height)}});
}

} // namespace

void add_thumb(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "thumb", "The thumbnail of a recording", {"thumb info first.srf"});
    object.require_subcommand(1);
    CLI::App &info = add_command(object, "info", "Tell how the thumbnail is coded", {"thumb info first.srf"});
    const auto file = std::make_shared<std::string>();
    completes(
        info.add_option("FILE", *file, "the recording or its info file: .srf, .inf or .tmp")->required()->type_name(""),
        Completes::recording);
    choose(commands, info, [file](Service &, Output &output) { show_thumbnail(output, *file); });
}

} // namespace pvrctl
