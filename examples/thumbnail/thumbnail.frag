#version 430 core

in vec3 normal;
in vec2 texCoord;
flat in int command;

uniform vec3 light;

out vec4 pixel;

// Normals made by the library point inwards, those of files outwards: both sides are lit.
void main() {
    vec4 texel = velglHas_map_Kd() ? texture(velgl_map_Kd, texCoord) : vec4(1.0);
    if (texel.a < 0.5)
        discard;
    float brightness = 0.2 + 0.8 * abs(dot(normalize(normal), normalize(light)));
    pixel = vec4(velglMaterial(command).Kd * texel.rgb * brightness, 1.0);
}
