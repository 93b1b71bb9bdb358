#version 330 core
uniform vec4 mode; // isLine
uniform vec4 ramp[96];

in float intensity;
in float depthT;

out vec4 fragColor;

vec3 rampAt(float t) {
    float position = t * 95.0;
    int index = min(int(position), 94);
    return mix(ramp[index].rgb, ramp[index + 1].rgb, position - float(index));
}

void main() {
    float t = clamp(intensity, 0.0, 1.0);
    vec3 c = rampAt(t);
    float fog = mix(1.0, 0.28, depthT);
    if (mode.x > 0.5) {
        vec3 lc = mix(c * 1.6, vec3(1.0), 0.15);
        fragColor = vec4(lc * fog, 0.16 * (1.0 - depthT * 0.55));
    } else {
        float base = 0.12 + 0.88 * t;
        fragColor = vec4(c * fog * base, 1.0);
    }
}
