#version 330 core
layout(location = 0) in vec2 uv; // time (0 oldest, left) and stereo position (0 top)
layout(location = 1) in float e; // the energy at this vertex

uniform mat4 mvp;
uniform vec4 params; // halfW, halfH, depth, hue

out float intensity;
out float timeT;
out float stereoV;
out float isLine;

void main() {
    vec3 p = vec3((uv.x - 0.5) * 2.0 * params.x, (0.5 - uv.y) * 2.0 * params.y, e * params.z);
    gl_Position = mvp * vec4(p, 1.0);
    intensity = e;
    timeT = uv.x;
    stereoV = uv.y;
    isLine = 0.0;
}
