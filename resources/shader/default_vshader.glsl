#version 120

// Every generator draws one quad through the fixed-function matrices; the fragment shaders
// read the quad's position in the unit square from texture coordinate set 0.
void main()
{
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
    gl_TexCoord[0] = gl_MultiTexCoord0;
}
