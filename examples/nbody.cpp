// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Bodies under their own gravity. Every frame is written as a picture in PGM format, and a bar tells how far it is.
//   nbody <folder> [frames]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <tarva.hpp>

namespace {

constexpr std::uint64_t body_count = 1024;
constexpr int picture_size = 256, steps_in_a_frame = 5;
constexpr float time_step = 0.004F;

const char* const source = R"(
  kernel void accelerate(global const float4* bodies, global float4* speeds, float step) {
    const float4 self = bodies[get_global_id(0)];
    float4 pull = (float4)(0.0f);
    for (size_t i = 0; i < get_global_size(0); ++i) {
      const float4 way = (float4)(bodies[i].xyz - self.xyz, 0.0f);
      const float distance2 = dot(way, way) + 0.01f; /* softened, so that close bodies do not fly apart */
      pull += way * (bodies[i].w / (distance2 * sqrt(distance2)));
    }
    speeds[get_global_id(0)] += pull * step;
  }
  kernel void move(global float4* bodies, global const float4* speeds, float step) {
    bodies[get_global_id(0)] += speeds[get_global_id(0)] * step;
  }
)";

// A disc that turns. The fourth component of a body is its mass.
void make_disc(std::vector<tarva::float4>& bodies, std::vector<tarva::float4>& speeds) {
  for (std::uint64_t i = 0; i < body_count; ++i) {
    const float angle = 2.39996F * static_cast<float>(i), part = static_cast<float>(i + 1) / body_count;
    const float radius = std::sqrt(part), speed = std::sqrt(part / (radius + 0.1F));
    const float x = std::cos(angle), y = std::sin(angle), z = 0.02F * std::sin(7.0F * angle);
    bodies.push_back({radius * x, radius * y, z, 1.0F / body_count});
    speeds.push_back({-speed * y, speed * x, 0.0F, 0.0F});
  }
}

void write_frame(const std::string& folder, int number, const std::vector<tarva::float4>& bodies) {
  std::string pixels(picture_size * picture_size, '\0');
  for (const tarva::float4& body : bodies) {
    const float x = (body[0] / 1.5F + 1.0F) * picture_size / 2,
                y = (body[1] / 1.5F + 1.0F) * picture_size / 2;
    if (x >= 0 && x < picture_size && y >= 0 && y < picture_size)
      pixels[static_cast<std::size_t>(y) * picture_size + static_cast<std::size_t>(x)] = '\xff';
  }
  char name[32];
  std::snprintf(name, sizeof name, "/frame%04d.pgm", number);
  std::ofstream file(folder + name, std::ios::binary);
  file << "P5 " << picture_size << ' ' << picture_size << " 255\n" << pixels;
  if (!file.flush())
    throw std::runtime_error("Cannot write " + folder + name + ".");
}

void show_progress(int done, int all) {
  const auto filled = static_cast<std::size_t>(40 * done / all);
  std::cerr << '\r' << '[' << std::string(filled, '#') << std::string(40 - filled, '.') << "] " << done
            << " of " << all << " frames" << (done == all ? "\n" : "") << std::flush;
}

// The speed of the centre, which pulls between the bodies cannot change.
double drift(const std::vector<tarva::float4>& speeds) {
  double x = 0, y = 0, z = 0;
  for (const tarva::float4& speed : speeds) {
    x += speed[0];
    y += speed[1];
    z += speed[2];
  }
  return std::sqrt(x * x + y * y + z * z) / body_count;
}

} // namespace

int main(int argc, char** argv) try {
  if (argc < 2) {
    std::cerr << "usage: nbody <folder> [frames]\n";
    return 2;
  }
  const int frames = argc > 2 ? std::atoi(argv[2]) : 100;
  std::vector<tarva::float4> start, speed;
  make_disc(start, speed);

  using vectors = tarva::memory<tarva::float4>;
  const tarva::program program = tarva::best_device().build(source);
  const auto accelerate = program.kernel<vectors, vectors, float>("accelerate");
  const auto move = program.kernel<vectors, vectors, float>("move");
  const vectors bodies(start, "bodies"), speeds(speed, "speeds");
  const auto all = tarva::range::items(body_count);
  for (int frame = 1; frame <= frames; ++frame) {
    for (int step = 0; step < steps_in_a_frame; ++step) {
      accelerate(all, bodies, speeds, time_step);
      move(all, bodies, speeds, time_step);
    }
    write_frame(argv[1], frame, bodies.read());
    show_progress(frame, frames);
  }

  const double change = std::abs(drift(speeds.read()) - drift(speed));
  std::cout << "The speed of the centre has changed by " << change
            << (change < 1e-4 ? ".\n" : ", too much.\n");
  return change < 1e-4 ? 0 : 1;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
