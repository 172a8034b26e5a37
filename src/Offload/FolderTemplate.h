#pragma once

#include "Platform/Clock.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

class RootFolder;
struct OffloadSettings;

/// A ready-made template. Known by its name.
struct FolderTemplateChoice {
    std::string_view name;
    std::string_view pathTemplate;
    std::string_view blurb;
};

/// Turns a short path template into the folder of one session, and sees to it that a session never
/// lands in the folder of an older one.
namespace FolderTemplate {

inline constexpr std::string_view defaultTemplate = "{Dest}/{YYYY-MM-DD}/{Ekip}/{Cam}/{CardName}";
/// The same without its two leading levels.
inline constexpr std::string_view defaultSuffix = "{Ekip}/{Cam}/{CardName}";

/// A piece of a template and its Turkish label.
struct Token {
    std::string_view token;
    std::string_view label;
};

inline constexpr std::array<Token, 9> tokens = {{
    {"{Dest}", "Hedef kök"},
    {"{YYYY-MM-DD}", "Tarih"},
    {"{Ekip}", "Ekip"},
    {"{Cam}", "Kamera / birim"},
    {"{Project}", "Proje adı"},
    {"{CardName}", "Kart adı"},
    {"{HHmmss}", "Saat"},
    {"{DestName}", "Hedef disk adı"},
    {"{YYYYMMDD}", "Sıkışık tarih"},
}};

inline constexpr std::array<Token, 3> separators = {{
    {"/", "Klasör ayırıcı"},
    {"-", "Tire"},
    {"_", "Alt çizgi"},
}};

inline constexpr std::array<FolderTemplateChoice, 6> choices = {{
    {"Ekip klasörü", "{Dest}/{YYYY-MM-DD}/{Ekip}/{Cam}/{CardName}", "Ekip1 / CamA / A001"},
    {"Düz satır", "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}_{HHmmss}", "Tek klasör adı"},
    {"Saatsiz klasör", "{Dest}/{YYYY-MM-DD}/{Cam}/{CardName}", "Aynı gün aynı kart: _2 eklenir"},
    {"Saatsiz düz", "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}", "Tarih altında tek isim"},
    {"Kart klasörü", "{Dest}/{YYYY-MM-DD}/{CardName}/{Cam}_{HHmmss}", "Önce kart adı"},
    {"Kompakt tarih", "{Dest}/{YYYY-MM-DD}/{Cam}/{YYYYMMDD}_{CardName}_{HHmmss}",
     "Klasör içinde 20260902"},
}};

/// What the tokens of a template stand for. Names may hold anything; "/" in them becomes "-".
/// A crew, unit or project of dots alone becomes the word for none, a card of dots "CARD".
struct Values {
    std::filesystem::path destination;
    std::string cardName;
    std::string camera;
    std::string ekip;
    std::string project;
    Instant now{};
};

/// The folder a template names, absolute if the destination is. A template that does not begin with
/// the destination stays inside it. Text in braces that is no token stays as it is.
std::filesystem::path expand(std::string_view pathTemplate, const Values& values);

/// The part of a session's path below its destination; empty when the path leads out of the
/// destination, nowhere but to the destination itself, or to the folder of its reports. Looks at no
/// disk.
std::optional<std::filesystem::path> belowDestination(const std::filesystem::path& session,
                                                      const std::filesystem::path& destination);

/// Whether a template, whatever names are put into it, leads out of the destination or nowhere but
/// to the destination itself. Such a template is to be refused before anyone works with it;
/// `L10n::templateLeadsOut` says so.
bool leadsOut(std::string_view pathTemplate);

/// The path, which is relative to the disk, if it is free there, else the first free of "<path>_2"
/// to "<path>_99", else one with a random ending. What only looks the same beside it (another
/// Unicode form, other bytes that are no UTF-8) takes its name, too, and "ascmhl" is never free.
/// Never fails; blocks.
std::filesystem::path uniqueExisting(const std::filesystem::path& path, const RootFolder& disk);

/// Without blanks around it; the default template when nothing is left.
std::string normalize(std::string_view pathTemplate);

/// The folder of a session by the user's template and project name; `values.project` is not looked
/// at.
std::filesystem::path sessionRoot(const OffloadSettings& settings, Values values);

} // namespace FolderTemplate

} // namespace slatewise
