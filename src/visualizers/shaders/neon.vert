#version 330 core
// Each spike is a flat vertical quad facing the viewer, made from the vertex index alone: six
// vertices per spike, spikes row after row, row 0 the newest at the front.
uniform mat4 mvp;
uniform vec4 params; // xspan, yscale, zspan, halfW
uniform vec4 grid;   // cols, rows, ramp length, pass
uniform samplerBuffer heights;

out float mag;
out float depthT;
out float edge;
out float topFrac;
out float across;

const float sides[6] = float[6](-1.0, 1.0, -1.0, -1.0, 1.0, 1.0);
const float tops[6] = float[6](0.0, 0.0, 1.0, 1.0, 0.0, 1.0);

void main() {
    int cols = int(grid.x);
    int rows = int(grid.y);
    int spike = gl_VertexID / 6;
    int corner = gl_VertexID % 6;
    int c = spike % cols;
    int r = spike / cols;
    float u = float(c) / float(cols - 1);
    float d = float(r) / float(rows - 1);
    float h = texelFetch(heights, spike).r;
    float side = sides[corner];
    float top = tops[corner];
    vec3 p = vec3((u - 0.5) * 2.0 * params.x + side * params.w, top * h * params.y, -d * params.z);
    gl_Position = mvp * vec4(p, 1.0);
    // A spike below 0.01 gives no light at all; outside the view it costs no fragments.
    if (h < 0.01)
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    mag = h;
    depthT = d;
    edge = side;
    topFrac = top;
    across = u;
}
