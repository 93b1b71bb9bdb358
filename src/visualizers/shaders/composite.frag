#version 330 core
uniform sampler2D scene;
uniform float bloomAmount;

in vec2 uv;
out vec4 fragColor;

void main() {
    vec2 texel = 1.0 / vec2(textureSize(scene, 0));
    vec4 base = texture(scene, uv);
    vec4 bloom = vec4(0.0);
    float wsum = 0.0;
    for (int dy = -3; dy <= 3; ++dy) {
        for (int dx = -3; dx <= 3; ++dx) {
            float w = exp(-float(dx * dx + dy * dy) / 6.0);
            vec4 c = texture(scene, uv + vec2(dx, dy) * texel * 2.4);
            float lum = max(c.r, max(c.g, c.b));
            bloom += c * max(0.0, lum - 0.26) * w;
            wsum += w;
        }
    }
    bloom /= max(wsum, 1e-4);
    vec3 col = base.rgb + bloom.rgb * bloomAmount;
    fragColor = vec4(col, clamp(max(col.r, max(col.g, col.b)), 0.0, 1.0));
}
