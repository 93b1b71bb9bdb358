#version 330 core
layout(location = 0) in vec4 line; // u, v, z (0...1), brightness

uniform mat4 mvp;
uniform vec4 params; // halfW, halfH, depth, hue

out float intensity;
out float timeT;
out float stereoV;
out float isLine;

void main() {
    vec3 p = vec3((line.x - 0.5) * 2.0 * params.x, (0.5 - line.y) * 2.0 * params.y,
                  line.z * params.z);
    gl_Position = mvp * vec4(p, 1.0);
    intensity = line.w;
    timeT = line.x;
    stereoV = line.y;
    isLine = 1.0;
}
