// Markup of the animation tests' documents: float sources, the interpolation
// source "interp" and samplers over them.
#pragma once

#include <sstream>
#include <string>
#include <string_view>

namespace oxtest {

// A <source> "id" whose float array holds `floats`, read by an accessor of
// `records` records of `stride` floats; `accessorExtra` adds attributes.
inline std::string FloatSource(std::string_view id, std::string_view floats, unsigned int records,
                               unsigned int stride, std::string_view accessorExtra = "") {
  std::istringstream tokens{std::string(floats)};
  std::string token;
  unsigned int count = 0;
  while (tokens >> token)
    ++count;
  std::ostringstream xml;
  xml << "<source id=\"" << id << "\"><float_array id=\"" << id << "-a\" count=\"" << count << "\">"
      << floats << "</float_array><technique_common><accessor source=\"#" << id << "-a\" count=\""
      << records << "\" stride=\"" << stride << "\" " << accessorExtra
      << "/></technique_common></source>";
  return xml.str();
}

// The interpolation source "interp": LINEAR `keys` times.
inline std::string InterpolationSource(unsigned int keys) {
  std::string words;
  for (unsigned int i = 0; i < keys; ++i)
    words += i == 0 ? "LINEAR" : " LINEAR";
  const std::string count = std::to_string(keys);
  return R"(<source id="interp"><Name_array id="interp-a" count=")" + count + R"(">)" + words +
         R"(</Name_array><technique_common><accessor source="#interp-a" count=")" + count +
         R"("/></technique_common></source>)";
}

// A <sampler> "id" over the sources "input" and "output" and the
// interpolation source "interp" (left out when `interpolation` is false).
inline std::string Sampler(std::string_view id, std::string_view input, std::string_view output,
                           bool interpolation = true) {
  std::string xml = "<sampler id=\"" + std::string(id) + "\">";
  xml += "<input semantic=\"INPUT\" source=\"#" + std::string(input) + "\"/>";
  xml += "<input semantic=\"OUTPUT\" source=\"#" + std::string(output) + "\"/>";
  if (interpolation) xml += R"(<input semantic="INTERPOLATION" source="#interp"/>)";
  return xml + "</sampler>";
}

}  // namespace oxtest
