#pragma once

#include "ViewDeckQt/NineSlice.h"

#include <array>

/// Every image of the host's sets that the module draws, by group and name. The icons of the package tree are not among
/// them: the item model recolours those and loads them by name.
namespace IconCatalogue
{

inline constexpr NineSlice::ResourceData divider{"panes/APane/divider_horizontal", "default", {}, {}, 255};
inline constexpr NineSlice::ResourceData tabDown{
    "panes/APane/divider_horizontal/Tabs_Down", "down_facing", {}, {}, 255};
inline constexpr std::array<NineSlice::ResourceData, 6> tabDownHighlights{{
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_1", {}, {}, 255},
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_2", {}, {}, 255},
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_3", {}, {}, 255},
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_4", {}, {}, 255},
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_5", {}, {}, 255},
    {"panes/APane/divider_horizontal/Tabs_Down", "down_facing_highlight_6", {}, {}, 255},
}};

inline constexpr NineSlice::ResourceData imp{"iconsV2/General", "imf_imp.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData folderClosed{"iconsV2/General", "folder_closed.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData folderOpen{"iconsV2/General", "folder_open.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData harddriveDownArrow{"iconsV2/General", "harddrive_down_arrow", {}, {}, 255};
inline constexpr NineSlice::ResourceData profileEditor{"iconsV2/General", "LaunchProfileEditor.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData minus{"iconsV2/General", "minus_icon.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData plus{"iconsV2/General", "plus_icon.png", {}, {}, 255};
inline constexpr NineSlice::ResourceData foldersTree{"iconsV2/SourceBrowser", "folders_tree.png", {}, {}, 255};

inline constexpr NineSlice::ResourceData scrollDown{"iconsV2/Arrows", "scroll_down", {}, {}, 255};
inline constexpr NineSlice::ResourceData scrollRight{"iconsV2/Arrows", "scroll_right", {}, {}, 255};
inline constexpr NineSlice::ResourceData thinArrowRight{"iconsV2/Arrows", "thin_arrow_right", {}, {}, 255};
inline constexpr NineSlice::ResourceData paneCollapseArrow{"icons/Arrows", "pane_collapse_arrow", {}, {}, 255};
inline constexpr NineSlice::ResourceData paneExpandArrow{"icons/Arrows", "pane_expand_arrow", {}, {}, 255};
inline constexpr NineSlice::ResourceData smallArrowDown{"icons/Arrows", "small_arrow_down", {}, {}, 255};
inline constexpr NineSlice::ResourceData smallArrowUp{"icons/Arrows", "small_arrow_up", {}, {}, 255};

/// The whole catalogue, in the order above.
inline constexpr std::array all{divider,
                                tabDown,
                                tabDownHighlights[0],
                                tabDownHighlights[1],
                                tabDownHighlights[2],
                                tabDownHighlights[3],
                                tabDownHighlights[4],
                                tabDownHighlights[5],
                                imp,
                                folderClosed,
                                folderOpen,
                                harddriveDownArrow,
                                profileEditor,
                                minus,
                                plus,
                                foldersTree,
                                scrollDown,
                                scrollRight,
                                thinArrowRight,
                                paneCollapseArrow,
                                paneExpandArrow,
                                smallArrowDown,
                                smallArrowUp};

} // namespace IconCatalogue
