#include "visualizers/views/MeshNode.h"

#include <QSGGeometryNode>
#include <QSGVertexColorMaterial>
#include <cstring>

namespace MirlPlayer {

static_assert(sizeof(MeshVertex) == sizeof(QSGGeometry::ColoredPoint2D));

QSGNode* updateMeshNode(QSGNode* old, const RoundedMesh& mesh) {
    const auto& vertices = mesh.vertices();
    const auto& indices = mesh.indices();
    if (vertices.empty() || indices.empty()) {
        delete old;
        return nullptr;
    }
    auto* node = static_cast<QSGGeometryNode*>(old);
    if (!node) {
        node = new QSGGeometryNode;
        auto* geometry =
            new QSGGeometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), int(vertices.size()),
                            int(indices.size()), QSGGeometry::UnsignedShortType);
        geometry->setDrawingMode(QSGGeometry::DrawTriangles);
        node->setGeometry(geometry);
        node->setFlag(QSGNode::OwnsGeometry);
        node->setMaterial(new QSGVertexColorMaterial);
        node->setFlag(QSGNode::OwnsMaterial);
    }
    QSGGeometry* geometry = node->geometry();
    if (geometry->vertexCount() != int(vertices.size()) ||
        geometry->indexCount() != int(indices.size()))
        geometry->allocate(int(vertices.size()), int(indices.size()));
    std::memcpy(geometry->vertexData(), vertices.data(), vertices.size() * sizeof(MeshVertex));
    std::memcpy(geometry->indexData(), indices.data(), indices.size() * sizeof(std::uint16_t));
    node->markDirty(QSGNode::DirtyGeometry);
    return node;
}

} // namespace MirlPlayer
