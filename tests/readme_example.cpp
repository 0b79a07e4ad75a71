// The example of README.md, kept here so that it is compiled and run.
#include <cstdio>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
using namespace OxDAEReader;

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  oxDAEReadWriteModule::Init(0);  // builds the lookup tables
  {
    oxDAEFile document;
    if (document.Load(OxKernel::oxURI(argv[1])) != 0) return 1;
    for (oxDAELibrary* library : document.GetRoot()->libraries)
      for (oxDAEElement* element : library->children)
        if (auto* geometry = oxDAEGeometry::DynamicCast(element))
          std::printf("%s: %zu primitives\n", geometry->id.c_str(), geometry->mesh ? geometry->mesh->primitives.size() : 0);
    if (document.Save(OxKernel::oxURI(argv[2])) != 0) return 1;
  }
  oxDAEReadWriteModule::Uninit(0);  // frees them after the last document
  return 0;
}
