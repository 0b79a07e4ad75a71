// Technique of the NVIDIA FX Composer importer.
#pragma once

#include "oxDAEReadWrite/oxDAETechniques_FCOLLADA.h"

namespace OxDAEReader {

// Effect import reference (<effect> > <extra> > <technique
// profile="NV_import"> > <import profile= url=>): the import's profile and
// its URL with the file references of exporters normalised
// (oxDAEFile::CorrectURI); both empty by default, and a later <import>
// replaces an earlier one. Parameters and the asset are read as by the
// generic technique; any other child logs "element not supported in
// <import>" as a warning and is skipped. Write gives "technique" with the
// <import> when it has a profile or URL.
class oxDAETechEffect_Nv : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAETechEffect_Nv, oxDAETechnique, "technique")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  const oxString& GetImportProfile() const { return importProfile; }
  const oxString& GetImportURI() const { return importURI; }

  oxString importProfile;
  oxString importURI;
};

}  // namespace OxDAEReader
