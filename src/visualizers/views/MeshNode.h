#pragma once

#include "look/RoundedMesh.h"

class QSGNode;

namespace MirlPlayer {

// The scene graph node that draws a RoundedMesh in one call with the vertex-colour material:
// `old` (this function's node of the last frame, or null) is filled again and returned; an
// empty mesh gives no node.
QSGNode* updateMeshNode(QSGNode* old, const RoundedMesh& mesh);

} // namespace MirlPlayer
