#pragma once

#include "Volumes/VolumeRecords.h"

#include <array>
#include <string_view>

/// Decides what a volume is from its facts alone: a small sum of weights behind hard gates, so that
/// no single fact makes a card. Pure; any thread.
namespace slatewise::VolumeClassifier {

/// Whole names, in lower case, of volumes that belong to a system.
inline constexpr std::array<std::string_view, 8> systemNames = {
    "macintosh hd", "preboot", "vm", "recovery", "update", "data", "home", "mobilebackups"};

// Parts of what is reported, in lower case.

inline constexpr std::array<std::string_view, 5> cameraProtocols = {
    "usb", "thunderbolt", "secure digital", "sd", "firewire"};

inline constexpr std::array<std::string_view, 6> cameraFileSystems = {
    "ms-dos", "fat32", "exfat", "udf", "ms-dos fat32", "ms-dos (fat32)"};

inline constexpr std::array<std::string_view, 7> destinationFileSystems = {
    "apfs",
    "hfs+",
    "hfsx",
    "journaled hfs+",
    "exfat",
    "mac os extended",
    "mac os extended (journaled)"};

/// Whether a volume that is no card suits as a destination, but for what may keep this user from
/// writing there.
bool suitsAsDestination(const VolumeFacts& facts);

/// The verdict, its score, and why: the reasons are fixed Turkish words in every language.
ClassifiedVolume classify(VolumeFacts facts);

} // namespace slatewise::VolumeClassifier
