// The oxDAEReadWrite module: the module object the host creates per context,
// and the one include that brings in the whole document model.
//
// Start the module before loading any document (Init, or the host's
// oxCreateModule followed by a start): that builds the lookup tables the
// readers need. Stop it (Uninit) after the last document is gone.
#pragma once

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxModule.h>

#include "oxDAEReadWrite/oxDAEElements_Animation.h"
#include "oxDAEReadWrite/oxDAEElements_Animation_Controller.h"
#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"
#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Param.h"
#include "oxDAEReadWrite/oxDAEElements_Fx_Shader.h"
#include "oxDAEReadWrite/oxDAEElements_Instance.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Geometry.h"
#include "oxDAEReadWrite/oxDAEElements_Main_LightCamera.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Physics.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEElements_Material.h"
#include "oxDAEReadWrite/oxDAEElements_Material_Program.h"
#include "oxDAEReadWrite/oxDAEFxRenderState.h"
#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"
#include "oxDAEReadWrite/oxDAEReadWrite_FilePath.h"
#include "oxDAEReadWrite/oxDAETechniques.h"
#include "oxDAEReadWrite/oxDAETechniques_FCOLLADA.h"
#include "oxDAEReadWrite/oxDAETechniques_NV.h"

namespace OxDAEReader {

class oxDAEReadWriteModule : public OxKernel::oxDynamicModule {
  OX_DECLARE_RTTI(oxDAEReadWriteModule)

 public:
  oxDAEReadWriteModule(unsigned int contextID, OxKernel::oxManifest* manifest)
      : oxDynamicModule(contextID, manifest) {}
  ~oxDAEReadWriteModule() override;

  // Replaces the module object of `contextID` by a new one, hands it back in
  // `module` and enters it in the host registry. Returns 0.
  static int CreateInstance(unsigned int contextID, OxKernel::oxRefPtr<OxKernel::oxModule>& module,
                            OxKernel::oxAssetSerializationContext* context);
  // Adds a use of the module for `contextID`, creating, registering and
  // starting it on first use. Returns the start's result.
  static int Init(unsigned int contextID, OxKernel::oxAsset* asset = nullptr);
  // Releases a use; the last one stops the module.
  static int Uninit(unsigned int contextID, OxKernel::oxAsset* asset = nullptr);
  // The module object of a context (InstancePtr: null when there is none).
  static oxDAEReadWriteModule& Instance(unsigned int contextID);
  static oxDAEReadWriteModule* InstancePtr(unsigned int contextID);

  // Builds the lookup tables: enumerations, parameter types, render states,
  // then the document's tokens. Tables are shared by all contexts and are
  // freed when the last started module stops.
  int _CreateSingletons() override;
  int _DestroySingletons() override;
  OxKernel::oxModuleStaticData _GetStaticData() const override;
  std::vector<unsigned int> _GetCtxObjectsList() const override;

  static void _PrepareHashes();
  static void _DestroyHashes();

 private:
  static OxKernel::oxHash<unsigned int, OxKernel::oxRefPtr<oxDAEReadWriteModule>>& Instances();
};

}  // namespace OxDAEReader

// The host's entry point: the same work as oxDAEReadWriteModule::CreateInstance.
extern "C" int oxCreateModule(unsigned int contextID,
                              OxKernel::oxRefPtr<OxKernel::oxModule>& module,
                              OxKernel::oxAssetSerializationContext* context);
