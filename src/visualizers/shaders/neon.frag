#version 330 core
uniform vec4 grid;  // cols, rows, ramp length, pass (0 halo, 1 core)
uniform vec4 extra; // glow
uniform vec4 ramp[96];

in float mag;
in float depthT;
in float edge;
in float topFrac;
in float across;

out vec4 fragColor;

void main() {
    int last = int(grid.z) - 1;
    vec3 base = ramp[clamp(int(round(clamp(across, 0.0, 1.0) * float(last))), 0, last)].rgb;
    float hot = max(0.0, (mag - 0.6) / 0.4);
    float bri = 0.32 + mag * 0.68;
    float keep = max(0.2, 0.95 - hot * 0.6) / 0.95;
    float peak = max(base.r, max(base.g, base.b));
    // The loudest bands wash towards white.
    vec3 colour = mix(vec3(peak), base, keep) * min(1.0, bri + hot * 0.12);
    float fade = mix(1.0, 0.30, depthT);
    float fall = pow(1.0 - abs(edge), 1.6);
    float vert = mix(0.5, 1.0, topFrac);
    float bright = mag * fade * fall * vert;
    if (grid.w < 0.5)
        bright *= 0.15 + 1.1 * extra.x;
    if (mag < 0.01)
        bright = 0.0;
    fragColor = vec4(colour * bright, bright);
}
