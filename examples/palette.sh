# A photograph in 256 learned colors, and in 16 with the error of each pixel spread.
omb apply photo.jpg learned.png neuquant=8
omb apply photo.jpg dithered.png dither=4
