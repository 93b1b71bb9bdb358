#version 330 core
layout(location = 0) in vec2 gridPos; // (column / 95, row / 95), row 0 the newest
layout(location = 1) in float height;

uniform mat4 mvp;
uniform vec4 params; // yscale, xspan, zspan, lineLift
uniform vec4 mode;   // isLine

out float intensity;
out float depthT;

void main() {
    float x = (gridPos.x - 0.5) * 2.0 * params.y;
    float z = -gridPos.y * params.z;
    float y = height * params.x + mode.x * params.w;
    gl_Position = mvp * vec4(x, y, z, 1.0);
    intensity = height;
    depthT = gridPos.y;
}
