// oxdae tree FILE [--scene ID] [--time T [--animation ID] [--exact]] [--json]: the
// nodes of one visual scene, depth first in document order, with their
// transforms, instances and matrices.
//
// The visual scene is the one named by --scene, else the one <scene>
// instances, else the first of the document. A node's local matrix is its
// static one; with --time it is evaluated at T under the animation named by
// --animation, or else under the first animation of the document (nested
// ones included) that drives any of the node's transforms. With --exact the
// matrix is evaluated on the exact curves (oxDAEPose) of every animation's
// channels, or of --animation's and those nested in it. The world matrix
// composes the local one with the parent's world matrix as transforms
// compose: world.MultiplyAB(parentWorld, local).
//
// Nodes are walked with ForEachNode, so the deepest hierarchy the reader
// keeps costs no stack.
#include <algorithm>
#include <optional>

#include <oxDAEConvert/oxDAEPose.h>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;
using OxMath::oxMatrix44;
using Transform = oxDAEHierarchyElement::TransformElement;

struct TreeOptions {
  std::string file;
  std::string scene;
  std::string animation;
  float time = 0.0f;  // read only when --time is given
  bool exact = false;
  bool json = false;
};

// One node as the walk reaches it.
struct NodeVisit {
  const oxDAENode* node = nullptr;
  size_t depth = 0;  // 0 for the visual scene's own nodes
  oxMatrix44 local;
  oxMatrix44 world;
};

// How local matrices are evaluated: static without a time, else at `time`
// on `exact` curves when given, else under `chosen` or, when null, under
// each node's driving animation.
class LocalMatrices {
 public:
  LocalMatrices(const oxDAEFile& document, std::optional<float> time, const oxDAEAnimation* chosen,
                const OxDAEConvert::oxDAEPose* exact)
      : m_animations(AllOf<oxDAEAnimation>(document)),
        m_time(time),
        m_chosen(chosen),
        m_exact(exact) {}

  oxMatrix44 Of(const oxDAENode& node) const {
    if (!m_time) return node.ComputeLocalMatrix();
    if (m_exact) return m_exact->LocalMatrix(node, *m_time);
    return node.ComputeLocalMatrix(
        *m_time, m_chosen ? m_chosen : OxDAEConvert::DrivingAnimation(node, m_animations));
  }

  // True when some animation of the document drives `transform`.
  bool IsAnimated(const Transform& transform) const {
    return std::any_of(m_animations.begin(), m_animations.end(),
                       [&transform](const oxDAEAnimation* a) { return transform.IsAnimated(a); });
  }

 private:
  std::vector<const oxDAEAnimation*> m_animations;
  std::optional<float> m_time;
  const oxDAEAnimation* m_chosen;
  const OxDAEConvert::oxDAEPose* m_exact;
};

// Calls `visit` for every node of `scene` as ForEachNode reaches it, with
// its matrices.
void WalkScene(const oxDAEVisualScene& scene, const LocalMatrices& locals,
               const std::function<void(const NodeVisit&)>& visit) {
  // worlds[d] is the world matrix of the last node reached at depth d: a
  // node's parent is the last node reached one level up.
  std::vector<oxMatrix44> worlds;
  ForEachNode(scene, [&](const oxDAENode& node, size_t depth) {
    NodeVisit v{&node, depth, locals.Of(node), {}};
    v.world.MultiplyAB(depth == 0 ? oxMatrix44::kIdentity : worlds[depth - 1], v.local);
    worlds.resize(depth);
    worlds.push_back(v.world);
    visit(v);
  });
}

// --- JSON ------------------------------------------------------------------------

Json TransformsJSON(const oxDAENode& node, const LocalMatrices& locals) {
  Json transforms = Json::array();
  for (const auto& t : node.transforms) {
    transforms.push_back(
        {{"kind", t->GetXMLTag()}, {"sid", JsonText(t->sid)}, {"animated", locals.IsAnimated(*t)}});
  }
  return transforms;
}

Json InstancesJSON(const oxDAENode& node) {
  Json instances = Json::array();
  for (const oxDAEInstance* instance : node.instances) {
    instances.push_back({{"kind", JsonText(instance->GetXMLTag())},
                         {"url", JsonText(instance->url)},
                         {"resolved", instance->target != nullptr}});
  }
  return instances;
}

Json NodeJSON(const NodeVisit& v, const LocalMatrices& locals) {
  const oxDAENode& node = *v.node;
  return {{"id", JsonText(node.id)},
          {"name", JsonText(node.name)},
          {"sid", JsonText(node.sid)},
          {"type", JsonText(oxDAEFile::_GetTokenString(node.type))},
          {"local", JsonMatrix(v.local)},
          {"world", JsonMatrix(v.world)},
          {"transforms", TransformsJSON(node, locals)},
          {"instances", InstancesJSON(node)},
          {"children", Json::array()}};
}

Json TreeJSON(const oxDAEVisualScene* scene, const LocalMatrices& locals) {
  Json out = {{"visual_scene", scene ? JsonText(scene->id) : Json()}, {"nodes", Json::array()}};
  if (!scene) return out;
  // levels[d] is the array that takes the nodes of depth d. The arrays live
  // inside objects that are complete but for their children, and nested
  // values do not move when the array holding their object grows.
  std::vector<Json*> levels{&out["nodes"]};
  WalkScene(*scene, locals, [&](const NodeVisit& v) {
    levels.resize(v.depth + 1);
    Json& object = levels[v.depth]->emplace_back(NodeJSON(v, locals));
    levels.push_back(&object["children"]);
  });
  return out;
}

// --- Text ------------------------------------------------------------------------

// A node without an id has no name either: it would have taken the name as
// its id.
std::string NodeLabel(const oxDAENode& node) {
  return node.id.empty() ? "(no id)" : node.id;
}

std::string TransformsText(const oxDAENode& node, const LocalMatrices& locals) {
  std::string text;
  for (const auto& t : node.transforms) {
    if (!text.empty()) text += ", ";
    text += t->GetXMLTag();
    const bool animated = locals.IsAnimated(*t);
    if (t->sid.empty() && !animated) continue;
    text += " (";
    text += t->sid;
    if (animated) text += t->sid.empty() ? "animated" : ", animated";
    text += ")";
  }
  return text;
}

std::string InstancesText(const oxDAENode& node) {
  std::string text;
  for (const oxDAEInstance* instance : node.instances) {
    if (!text.empty()) text += ", ";
    text += OxKernel::oxConcat(instance->GetXMLTag(), " ", instance->url);
    if (instance->url.empty()) {
      text += "(no url)";
    } else if (!instance->target) {
      text += " (unresolved)";
    }
  }
  return text;
}

// The four rows of the local matrix `m`, each column right-aligned; one line
// saying so for the identity.
std::string MatrixText(const std::string& indent, const oxMatrix44& m) {
  if (m == oxMatrix44::kIdentity) return indent + "local: identity\n";
  std::string cells[16];
  size_t widths[4] = {};
  for (int i = 0; i < 16; ++i) {
    // "-0" reads as a sign error to a person; the JSON form keeps it.
    cells[i] = NumberText(m.m[i] == 0.0f ? 0.0f : m.m[i]);
    widths[i % 4] = std::max(widths[i % 4], cells[i].size());
  }
  std::string text;
  for (int row = 0; row < 4; ++row) {
    text += indent + (row == 0 ? "local: " : "       ");
    for (int column = 0; column < 4; ++column) {
      const std::string& cell = cells[row * 4 + column];
      text += std::string(widths[column] - cell.size() + (column ? 2 : 0), ' ') + cell;
    }
    text += "\n";
  }
  return text;
}

std::string TreeText(const oxDAEVisualScene* scene, const LocalMatrices& locals) {
  if (!scene) return "no visual scene\n";
  std::string text = "visual scene " + (scene->id.empty() ? "(no id)" : scene->id) + "\n";
  WalkScene(*scene, locals, [&](const NodeVisit& v) {
    const std::string indent(2 * v.depth, ' ');
    const std::string inner = indent + "  ";
    text += OxKernel::oxConcat(indent, NodeLabel(*v.node), " [",
                               oxDAEFile::_GetTokenString(v.node->type), "]\n");
    const std::string transforms = TransformsText(*v.node, locals);
    if (!transforms.empty()) text += inner + "transforms: " + transforms + "\n";
    const std::string instances = InstancesText(*v.node);
    if (!instances.empty()) text += inner + "instances: " + instances + "\n";
    text += MatrixText(inner, v.local);
  });
  return text;
}

// --- Command ---------------------------------------------------------------------

// `time` is the time given with --time, none without.
int RunTree(const TreeOptions& options, std::optional<float> time) {
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  const oxDAEVisualScene* scene = DefaultVisualScene(document);
  if (!options.scene.empty()) {
    scene = FindRequested<oxDAEVisualScene>(document, options.file, options.scene, "visual scene");
    if (!scene) return kExitFailure;
  }
  const oxDAEAnimation* animation = nullptr;
  if (!options.animation.empty()) {
    animation =
        FindRequested<oxDAEAnimation>(document, options.file, options.animation, "animation");
    if (!animation) return kExitFailure;
  }
  std::optional<OxDAEConvert::oxDAEPose> pose;
  if (options.exact) pose.emplace(document, animation);
  const LocalMatrices locals(document, time, animation, pose ? &*pose : nullptr);
  Print(
      options.json, [&] { return TreeJSON(scene, locals); },
      [&] { return TreeText(scene, locals); });
  return kExitOK;
}

}  // namespace

Command AddTree(CLI::App& tool) {
  auto options = std::make_shared<TreeOptions>();
  CLI::App* command = tool.add_subcommand(
      "tree", "Show a visual scene's nodes with transforms, instances and matrices.");
  CLI::Option* time = nullptr;
  AddFileAndJSON(*command, options->file, options->json, "tree", [&] {
    command->add_option("--scene", options->scene,
                        "the id of the visual scene (default: the one <scene> names, else the "
                        "first)");
    time = AddTimeOption(*command, options->time, false);
    command
        ->add_option("--animation", options->animation,
                     "the id of the animation to evaluate (default: per node, the first that "
                     "drives it)")
        ->needs(time);
    command
        ->add_flag("--exact", options->exact,
                   "evaluate each curve as its INTERPOLATION says, every animation's channels "
                   "together, rather than linearly")
        ->needs(time);
  });
  return {command, [options, time] {
            const bool timed = time->count() > 0;
            return RunTree(*options, timed ? std::optional(options->time) : std::nullopt);
          }};
}

}  // namespace oxdae
