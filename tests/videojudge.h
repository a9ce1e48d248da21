#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// What independent programs see in a video file.
namespace VideoJudge {

/// The output of a shell command; an exception if it fails.
inline std::string outputOf(const std::string& command)
{
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) throw std::runtime_error("no shell");
    std::string text;
    std::array<char, 65536> buffer;
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe))
        text.append(buffer.data(), count);
    if (pclose(pipe) != 0) throw std::runtime_error(command + " failed: " + text);
    return text;
}

/// Facts of the video stream by their names, with all pictures decoded and counted.
inline std::map<std::string, std::string> probe(const std::filesystem::path& file)
{
    std::istringstream lines(
        outputOf("ffprobe -v error -count_frames -select_streams v:0 -show_streams '" + file.string() + "' 2>&1"));
    std::map<std::string, std::string> facts;
    for (std::string line; std::getline(lines, line);) {
        const auto sign = line.find('=');
        if (sign != std::string::npos) facts[line.substr(0, sign)] = line.substr(sign + 1);
    }
    return facts;
}

inline int countFrames(const std::filesystem::path& file)
{
    return std::stoi(probe(file).at("nb_read_frames"));
}

/// All pictures as players show them: rows of red, green and blue, one picture after the other.
inline std::vector<std::uint8_t> decode(const std::filesystem::path& file)
{
    const std::string bytes = outputOf("ffmpeg -v error -i '" + file.string() +
                                       "' -fps_mode passthrough -f rawvideo -pix_fmt rgb24 -sws_flags "
                                       "accurate_rnd+full_chroma_int - 2>&1");
    return {bytes.begin(), bytes.end()};
}

/// The kinds of the boxes of an MP4 file's outermost level, in order.
inline std::vector<std::string> boxes(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::string> kinds;
    std::array<unsigned char, 8> head;
    std::uint64_t position = 0;
    while (stream.seekg(static_cast<std::streamoff>(position)).read(reinterpret_cast<char*>(head.data()), 8)) {
        const std::uint64_t size = std::uint64_t{head[0]} << 24 | head[1] << 16 | head[2] << 8 | head[3];
        kinds.emplace_back(head.begin() + 4, head.end());
        if (size < 8) throw std::runtime_error("a box of " + std::to_string(size) + " bytes");
        position += size;
    }
    return kinds;
}

}  // namespace VideoJudge
