#pragma once

namespace desk::media
{

/// Somebody watches or listens for as long as one of these lives: work in the background leaves room for playback.
/// Any thread.
class Playing
{
public:
    Playing();
    ~Playing();
    Playing(const Playing&) = delete;
    Playing& operator=(const Playing&) = delete;

    /// Whether one lives in this process.
    static bool isGoingOn();

    /// What is watched could not keep up just now.
    static void fallBehind();
    /// Whether that was less than two seconds ago.
    static bool isBehind();
};

} // namespace desk::media
