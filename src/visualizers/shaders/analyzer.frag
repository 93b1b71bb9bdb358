#version 330 core
uniform vec4 params2; // sensDivisor, gridOpacity
uniform vec4 ramp[96];

in float intensity;
in float timeT;
in float stereoV;
in float isLine;

out vec4 fragColor;

vec3 rampAt(float t) {
    float position = clamp(t, 0.0, 1.0) * 95.0;
    int index = min(int(position), 94);
    return mix(ramp[index].rgb, ramp[index + 1].rgb, position - float(index));
}

void main() {
    if (isLine > 0.5) {
        // The grid is coloured by stereo position and fades out under the title corner.
        vec3 c = rampAt(stereoV);
        float topFade = smoothstep(0.02, 0.22, stereoV);
        float leftFade = smoothstep(0.0, 0.18, timeT);
        float fade = min(1.0, topFade + 0.15) * min(1.0, leftFade + 0.35);
        fragColor = vec4(c * intensity, min(0.8, intensity + 0.1) * fade * params2.y);
    } else {
        // The curve's bulk lies around 0.2 to 0.5 with peaks near 0.7; peaks go above 1 and bloom.
        float e = intensity;
        float t = clamp(e / max(0.2, params2.x), 0.0, 1.0);
        vec3 c = rampAt(t);
        float fade = mix(0.65, 1.0, timeT);
        float bright = 0.45 + 0.65 * t;
        float alpha = clamp(smoothstep(0.03, 0.26, e) * 0.85 + smoothstep(0.46, 0.66, e) * 0.15,
                            0.0, 1.0);
        fragColor = vec4(c * bright * fade, alpha);
    }
}
