// oxdae check FILE [--json]: what to fix before shipping a document. Lists,
// in document order, every element whose reference did not resolve, and
// counts the errors and warnings logged while loading.
//
// An element is listed when its reference text is not empty and either its
// update after loading reported a code (the document's unresolved list), or
// it is an instance still without a target whose url names nothing (code
// -1: an instance controller reports success even when its url names
// nothing). The
// reference shown is the text that failed: an instance's url, an instance
// material's target, a channel's source when it has no sampler and else its
// target path, the first skeleton of an instance controller that named no
// node, an instance effect's url, a skin's source, the texture reference of
// a colour-or-texture value (listed as "texture"; colour and float values
// name nothing and are not listed).
//
// Exit status: 0 when nothing is listed and no error was logged, 3
// otherwise, 1 when the document cannot be read.
#include <algorithm>
#include <optional>
#include <unordered_map>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;

struct CheckOptions {
  std::string file;
  bool json = false;
};

struct Finding {
  const oxDAEBaseElement* element = nullptr;
  oxString reference;
  int code = 0;
};

// The reference text of an element whose update reported a code. None for
// elements of other classes, which report theirs without a text the tool
// knows how to read: they are listed with an empty reference.
std::optional<oxString> FailedReference(const oxDAEBaseElement& element) {
  if (const auto* controller = oxDAEInstanceController::DynamicCast(&element)) {
    // Skeletons resolve in order and stop at the first that names no node.
    const size_t failed = controller->skeletonNodes.size();
    if (failed < controller->skeletons.size()) return controller->skeletons[failed];
    return controller->url;
  }
  if (const auto* instance = oxDAEInstance::DynamicCast(&element)) return instance->url;
  if (const auto* material = oxDAEInstanceMaterial::DynamicCast(&element)) return material->target;
  if (const auto* channel = oxDAEChannel::DynamicCast(&element))
    return channel->sampler ? channel->targetPath : channel->source;
  if (const auto* effect = oxDAEInstanceEffect::DynamicCast(&element)) return effect->url;
  if (const auto* skin = oxDAESkin::DynamicCast(&element)) return skin->source;
  // Colours and floats report a code too: only a texture names something.
  if (const auto* value = oxDAEFxColorOrTextureType::DynamicCast(&element))
    return value->IsTexture() ? value->texture : oxString();
  if (oxDAEFxFloatOrParamType::DynamicCast(&element)) return oxString();
  return std::nullopt;
}

// The tag a finding names: a colour-or-texture value takes its tag from its
// parent, and what failed in it is its <texture>.
std::string_view FindingTag(const oxDAEBaseElement& element) {
  if (oxDAEFxColorOrTextureType::DynamicCast(&element)) return "texture";
  return element.GetXMLTag();
}

std::vector<Finding> FindUnresolved(const oxDAEFile& document) {
  std::unordered_multimap<const oxDAEBaseElement*, int> reported;
  for (const oxDAEFile::Unresolved& u : document.GetUnresolved())
    reported.emplace(u.element, u.code);
  std::vector<Finding> findings;
  for (const auto& owned : document.GetElements()) {
    const oxDAEBaseElement* element = owned.get();
    const size_t ownFindings = findings.size();
    const auto [first, last] = reported.equal_range(element);
    const std::optional<oxString> reference = FailedReference(*element);
    for (auto it = first; it != last; ++it) {
      // An element that holds a reference is listed only when it has text.
      if (reference && reference->empty()) continue;
      findings.push_back({element, reference.value_or(oxString()), it->second});
    }
    const oxDAEInstance* instance = oxDAEInstance::DynamicCast(element);
    if (!instance || instance->target || instance->url.empty()) continue;
    // An instance controller whose skeleton failed never bound its url,
    // which may still name an element: only a url that names nothing is a
    // finding.
    if (document.ResolveURI(instance->url)) continue;
    const bool listed =
        std::any_of(findings.begin() + ownFindings, findings.end(),
                    [instance](const Finding& f) { return f.reference == instance->url; });
    if (!listed) findings.push_back({element, instance->url, kDAEUnresolved});
  }
  return findings;
}

Json CheckJSON(const std::vector<Finding>& findings, const LogCounter& log) {
  Json unresolved = Json::array();
  for (const Finding& f : findings) {
    unresolved.push_back({{"element", JsonText(FindingTag(*f.element))},
                          {"owner", JsonText(f.element->GetParentingPath())},
                          {"reference", JsonText(f.reference)},
                          {"code", f.code}});
  }
  return {
      {"unresolved", std::move(unresolved)}, {"errors", log.errors}, {"warnings", log.warnings}};
}

// One line per finding: "TAG in OWNER: REFERENCE (code N)", then the totals.
std::string CheckText(const std::vector<Finding>& findings, const LogCounter& log) {
  std::string text;
  for (const Finding& f : findings) {
    const oxString owner = f.element->GetParentingPath();
    text += OxKernel::oxConcat(FindingTag(*f.element), " in ", owner.empty() ? "(no id)" : owner,
                               ": ", f.reference.empty() ? "(no reference)" : f.reference,
                               " (code ", f.code, ")\n");
  }
  text += OxKernel::oxConcat(findings.size(), " unresolved, ", log.errors, " error(s), ",
                             log.warnings, " warning(s)\n");
  return text;
}

int RunCheck(const CheckOptions& options) {
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  const std::vector<Finding> findings = FindUnresolved(document);
  Print(
      options.json, [&] { return CheckJSON(findings, log); },
      [&] { return CheckText(findings, log); });
  return findings.empty() && log.errors == 0 ? kExitOK : kExitFindings;
}

}  // namespace

Command AddCheck(CLI::App& tool) {
  auto options = std::make_shared<CheckOptions>();
  CLI::App* command = tool.add_subcommand(
      "check", "List unresolved references, count logged errors (exit status 3 if any).");
  AddFileAndJSON(*command, options->file, options->json, "findings");
  return {command, [options] { return RunCheck(*options); }};
}

}  // namespace oxdae
