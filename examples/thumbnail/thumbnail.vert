#version 430 core

in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;

uniform mat4 viewProjection;

out vec3 normal;
out vec2 texCoord;
flat out int command;

void main() {
    command = velglCommand();
    normal = va_Normal;
    texCoord = va_TexCoord;
    gl_Position = viewProjection * vec4(va_Vertex, 1.0);
}
