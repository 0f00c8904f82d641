#pragma once
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// Reads animated nodes back from a binary glTF file, as a player would.
class GlbReader {
public:
    explicit GlbReader(const std::string& file) {
        std::uint32_t jsonLength = 0;
        std::memcpy(&jsonLength, file.data() + 12, 4);
        json = nlohmann::json::parse(file.substr(20, jsonLength));
        mBinary = file.substr(20 + jsonLength + 8);
    }

    struct Pose {
        std::array<double, 3> position{};
        std::array<double, 4> rotation{}; ///< x, y, z, w
        double scale = 1;
    };

    [[nodiscard]] std::size_t nodeOf(const std::string& name) const {
        for (std::size_t i = 0; i < json["nodes"].size(); ++i)
            if (json["nodes"][i].value("name", "") == name)
                return i;
        throw std::runtime_error("no node " + name);
    }

    [[nodiscard]] Pose poseAt(std::size_t node, double time) const {
        Pose pose;
        pose.position = json["nodes"][node]["translation"].get<std::array<double, 3>>();
        pose.rotation = json["nodes"][node]["rotation"].get<std::array<double, 4>>();
        if (!json.contains("animations"))
            return pose;
        const auto& animation = json["animations"][0];
        for (const auto& channel : animation["channels"]) {
            if (channel["target"]["node"] != node)
                continue;
            const auto& sampler = animation["samplers"][channel["sampler"].get<std::size_t>()];
            const std::string path = channel["target"]["path"];
            const std::vector<double> value =
                valueAt(numbers(sampler["input"]), numbers(sampler["output"]), time,
                        sampler["interpolation"] == "STEP", path == "rotation");
            if (path == "translation")
                std::copy_n(value.begin(), 3, pose.position.begin());
            else if (path == "rotation")
                std::copy_n(value.begin(), 4, pose.rotation.begin());
            else
                pose.scale = value[0];
        }
        return pose;
    }

    [[nodiscard]] std::vector<double> numbers(std::size_t index) const {
        const auto& accessor = json["accessors"][index];
        const auto& view = json["bufferViews"][accessor["bufferView"].get<std::size_t>()];
        const std::size_t width = accessor["type"] == "SCALAR" ? 1
                                  : accessor["type"] == "VEC3" ? 3
                                                               : 4;
        const std::size_t count = accessor["count"].get<std::size_t>() * width;
        const char* data = mBinary.data() + view["byteOffset"].get<std::size_t>() +
                           accessor["byteOffset"].get<std::size_t>();
        std::vector<double> values(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (accessor["componentType"] == 5126) {
                float number;
                std::memcpy(&number, data + 4 * i, 4);
                values[i] = static_cast<double>(number);
            } else { // normalised shorts
                std::int16_t number;
                std::memcpy(&number, data + 2 * i, 2);
                values[i] = std::max(number / 32767.0, -1.0);
            }
        }
        return values;
    }

    [[nodiscard]] std::string bytes(std::size_t view) const {
        const auto& place = json["bufferViews"][view];
        return mBinary.substr(place["byteOffset"].get<std::size_t>(),
                              place["byteLength"].get<std::size_t>());
    }

    nlohmann::json json;

private:
    static std::vector<double> valueAt(const std::vector<double>& times,
                                       const std::vector<double>& values, double time, bool isStep,
                                       bool isRotation) {
        const std::size_t width = values.size() / times.size();
        std::size_t key = 0;
        while (key + 1 < times.size() && times[key + 1] <= time)
            ++key;
        const auto at = values.begin() + static_cast<std::ptrdiff_t>(key * width);
        std::vector<double> value(at, at + static_cast<std::ptrdiff_t>(width));
        if (isStep || time <= times[key] || key + 1 == times.size())
            return value;
        const double t = (time - times[key]) / (times[key + 1] - times[key]);
        double dot = 0, square = 0;
        for (std::size_t i = 0; i < width; ++i)
            dot += value[i] * values[(key + 1) * width + i];
        const double angle = isRotation ? std::acos(std::min(std::abs(dot), 1.0)) : 0;
        for (std::size_t i = 0; i < width; ++i) {
            const double next = (isRotation && dot < 0 ? -1 : 1) * values[(key + 1) * width + i];
            const double a = angle > 1e-6 ? std::sin((1 - t) * angle) / std::sin(angle) : 1 - t;
            const double b = angle > 1e-6 ? std::sin(t * angle) / std::sin(angle) : t;
            value[i] = a * value[i] + b * next;
            square += value[i] * value[i];
        }
        for (double& component : value)
            component /= isRotation ? std::sqrt(square) : 1;
        return value;
    }

    std::string mBinary;
};
