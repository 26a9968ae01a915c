// The value written for read-back (gray 1): value x 65536 split into red (set only by 1.0), green
// (the high byte) and blue (the low byte). The framebuffer stores round(channel x 255), so each
// byte is divided by 255 to be stored as itself. A negative value wraps: its red is clamped to 0
// while green and blue keep the value's place within its unit.
vec4 encodeValue(float value)
{
    float w = value * 65536.0;
    float r = floor(w / 65536.0);
    float g = floor((w - r * 65536.0) / 256.0);
    float b = floor(w - r * 65536.0 - g * 256.0);
    return vec4(r / 255.0, g / 255.0, b / 255.0, 1.0);
}
