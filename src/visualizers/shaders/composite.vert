#version 330 core
// One triangle that covers the viewport.
out vec2 uv;

void main() {
    vec2 corners[3] = vec2[3](vec2(-1.0, -1.0), vec2(3.0, -1.0), vec2(-1.0, 3.0));
    vec2 p = corners[gl_VertexID];
    gl_Position = vec4(p, 0.0, 1.0);
    // OpenGL keeps the first row of a rendered texture at the bottom.
    uv = (p + 1.0) * 0.5;
}
